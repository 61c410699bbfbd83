#include "driver/report.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <string>

namespace dorvek::driver {
namespace {

std::string written(const Report& report) {
    textio::Output output;
    write_results(output, report);
    return {output.buffer.data(), output.used};
}

// A report in which every number is that of the next bit pattern; they cover all magnitudes, and
// what is no number.
Report report_of(std::int32_t nsamp, std::uint32_t& bits) {
    Report report{.nsamp = nsamp, .ipdf = {3, -7}};
    const auto fill = [&](std::span<const Line> lines, std::size_t s) {
        for_each_number(lines, [&](const Field& field) {
            *std::get<float*>(field.in(report, s)) = std::bit_cast<float>(bits += 104729);
        });
    };
    for (std::size_t s = 0; s < samples(report); ++s) {
        report.snames[s].fill(' ');
        report.snames[s][s] = 'n';
        fill(sample_lines(), s);
    }
    fill(statistics_lines(), 0);
    return report;
}

TEST(TakeReport, TakesWhatIsWrittenAndNothingElse) {
    std::uint32_t bits = 0;
    for (const std::int32_t nsamp : {1, 2}) {
        for (int i = 0; i < 500; ++i) {
            const std::string all = written(report_of(nsamp, bits));
            std::string_view text = all;
            Report taken{.nsamp = nsamp};
            ASSERT_TRUE(take_report(text, taken)) << all;
            EXPECT_EQ(text, "");
            EXPECT_EQ(written(taken), all);
        }
        const std::string all = written(report_of(nsamp, bits));
        for (std::size_t cut = 0; cut < all.size(); ++cut) {
            std::string_view text = std::string_view(all).substr(0, cut);
            Report taken{.nsamp = nsamp};
            ASSERT_FALSE(take_report(text, taken)) << text;
            EXPECT_EQ(text.size(), cut);
        }
        std::size_t line = 0;
        for (std::size_t at = 0; at < all.size(); ++at) {
            line += all[at] == '\n' ? 1U : 0U;
            if (all[at] != '\n' && line % 23 == 2 && line < 46) continue;  // any name is a name
            std::string damaged = all;
            damaged[at] = '~';
            std::string_view text = damaged;
            Report taken{.nsamp = nsamp};
            ASSERT_FALSE(take_report(text, taken)) << damaged;
        }
    }
}

}  // namespace
}  // namespace dorvek::driver
