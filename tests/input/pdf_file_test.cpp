#include "input/pdf_file.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>

#include "input/inpdf.hpp"
#include "support/files.hpp"

namespace dorvek::input {
namespace {

using textio::Status;

PdfReading read(PdfSet& set, std::int32_t npdfs, std::string_view content) {
    textio::Input file;
    attach(file, support::file_holding(content));
    const PdfReading reading = read_pdf(file, npdfs, set);
    ::close(file.fd);
    return reading;
}

TEST(ReadPdf, SaysHowItWent) {
    static const struct {
        std::int32_t npdfs;
        std::string content;
        Status status;
        std::int64_t line;
        std::int32_t bins;
        bool continued;
    } cases[] = {
        {1, "", Status::ok, 0, 0, false},
        {1, "1 2 3\n\n\n2 3 4 9\n", Status::ok, 0, 2, false},
        {1, "1 2 3\n2 3 4", Status::ok, 0, 1, false},  // no line
        {1, "1 2 3\n2 3\n", Status::ok, 0, 1, false},  // no bin
        {1, "1 2\n3\n2 3 4\n", Status::ok, 0, 2, true},
        {1, "1 2 3\n\n2 3\n\n4\n", Status::ok, 0, 2, true},
        {1, "1 2 3\n\n2 x\n", Status::illegal_character, 3, 1, false},
        {1, "1 2\nx\n", Status::illegal_character, 2, 0, false},
        {0, "1 x\n2\n", Status::ok, 0, 2, false},
        {-1, "1 x\n2\n", Status::ok, 0, 2, false},
        // Numbers beyond the tenth partial are read as well.
        {11, "1 20*2\n3\nx\n", Status::illegal_character, 3, 0, false},
        {2147483647, "1 2147483647*2\n2147483647*3\n", Status::ok, 0, 1, true},
    };
    const auto set = std::make_unique<PdfSet>();
    for (const auto& [npdfs, content, status, line, bins, continued] : cases) {
        SCOPED_TRACE(content);
        const PdfReading reading = read(*set, npdfs, content);
        EXPECT_EQ(reading.status, status);
        EXPECT_EQ(reading.line, line);
        EXPECT_EQ(set->npdfs, npdfs);
        EXPECT_EQ(set->nbins, bins);
        EXPECT_EQ(reading.bin_continued, continued);
        EXPECT_FALSE(reading.bins_left_out);
    }
}

TEST(CountNumbers, TakesNothingButBlankLines) {
    static const struct {
        std::string content;
        Status status;
        std::size_t count;
        std::int32_t bins;  // of one partial, read afterwards
    } cases[] = {
        {"", Status::ok, 0, 0},
        {"\n \n1 2 3\n4 5 6\n", Status::ok, 3, 2},
        {"1\n2 3\n", Status::ok, 1, 1},
        {"1,2*7,/ 9\n", Status::ok, 3, 1},
        {"1 2147483647*2\n", Status::ok, 2147483647, 1},
        {"\nr g n\n", Status::illegal_character, 0, 0},
    };
    for (const auto& [content, status, count, bins] : cases) {
        SCOPED_TRACE(content);
        textio::Input file;
        attach(file, support::file_holding(content));
        std::size_t counted = 0;
        const PdfReading reading = count_numbers(file, counted);
        EXPECT_EQ(reading.status, status);
        EXPECT_EQ(reading.line, status == Status::ok ? 0 : 2);
        EXPECT_EQ(counted, count);
        const auto set = std::make_unique<PdfSet>();
        EXPECT_EQ(read_pdf(file, 1, *set).status, Status::ok);
        EXPECT_EQ(set->nbins, bins);
        ::close(file.fd);
    }
}

TEST(ReadPdf, KeepsWithinItsCapacities) {
    std::string content;  // 25 numbers on three lines
    for (int bin = 1; bin <= maxbin; ++bin) content += std::to_string(bin) + "\n20*2\n3 3*4\n";
    for (const auto& [rest, left_out] :
         {std::pair{"", false}, std::pair{"10001 1\n", false},  // cut short: no bin
          std::pair{"10001 24*1\nx\n", true}}) {
        const auto set = std::make_unique<PdfSet>();
        EXPECT_EQ(read(*set, 12, content + rest).bins_left_out, left_out);
        EXPECT_EQ(set->nbins, maxbin);
        EXPECT_EQ(set->r[1], 2.0f);
        EXPECT_EQ(set->r.back(), 10000.0f);
        EXPECT_EQ(set->g[9].back(), 2.0f);
        EXPECT_EQ(set->cn[9].back(), 2.0f);
        EXPECT_FALSE(holds_partial(*set, 11));
    }
}

TEST(ReadPdf, SaysWhyItCannotRead) {
    textio::Input file;
    attach(file, support::file_holding("1 2 3\n"));
    ::close(file.fd);
    const auto set = std::make_unique<PdfSet>();
    const PdfReading reading = read_pdf(file, 1, *set);
    EXPECT_EQ(reading.status, Status::cannot_read);
    EXPECT_EQ(reading.line, 1);
    EXPECT_EQ(reading.error, EBADF);
}

TEST(Inpdf, SaysWhatIsLeftOut) {
    std::string content;
    for (int bin = 0; bin <= maxbin; ++bin) content += "1 2 3\n";
    const int fd = support::file_holding(content);
    FileName fname{};
    fname.fill(' ');
    std::ranges::copy("/proc/self/fd/" + std::to_string(fd), fname.begin());
    const auto set = std::make_unique<PdfSet>();
    const std::string shown = support::play("1\n", [&](textio::Terminal& terminal) {
        textio::Input file;
        inpdf(*set, fname, terminal, file);
    });
    ::close(fd);
    EXPECT_TRUE(
        shown.ends_with(" only the first  10000 bins of the file are kept\n"
                        " number of pdfs:   1  number of bins:   10000\n"))
        << shown;
}

}  // namespace
}  // namespace dorvek::input
