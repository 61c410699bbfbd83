// What each part of the work costs beside the least that it could cost. Work and limit take turns,
// so that whatever else the machine does meets both.

#include <benchmark/benchmark.h>
#include <fcntl.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "analysis/errana.hpp"
#include "analysis/pdfana.hpp"
#include "driver/report.hpp"
#include "input/conbin.hpp"
#include "input/inpdf.hpp"
#include "numbers.hpp"
#include "stats/beta.hpp"
#include "stats/compare.hpp"
#include "stats/gamma.hpp"
#include "support/typed.hpp"

namespace {

using namespace dorvek;

constexpr std::int32_t ilo = 701;  // a window of 200 bins around the first peak
constexpr std::int32_t ihi = 900;

// Runs `prepare`, which does not count, then `work`, then `limit`, and reports the time of `work`,
// that of `limit` in microseconds, and how often the second goes into the first.
template <typename Prepare, typename Work, typename Limit>
void beside(benchmark::State& state, Prepare prepare, Work work, Limit limit) {
    using Clock = std::chrono::steady_clock;
    std::chrono::duration<double> work_time{};
    std::chrono::duration<double> limit_time{};
    for (auto _ : state) {
        prepare();
        const auto start = Clock::now();
        work();
        const auto middle = Clock::now();
        limit();
        const auto end = Clock::now();
        benchmark::ClobberMemory();
        const std::chrono::duration<double> elapsed = middle - start;
        state.SetIterationTime(elapsed.count());
        work_time += elapsed;
        limit_time += end - middle;
    }
    state.counters["limit_us"] =
        benchmark::Counter(1e6 * limit_time.count(), benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = work_time / limit_time;
}

// Peaks that move with the partial, on an even grid.
void fill(input::PdfSet& set, std::int32_t partials, float step, float shift) {
    set.npdfs = partials;
    set.nbins = set.used = input::maxbin;
    for (std::size_t i = 0; i < set.r.size(); ++i) {
        const float r = set.r[i] = step * static_cast<float>(i + 1);
        for (std::size_t p = 0; p < input::held_partials(set); ++p) {
            const float d = r - 1.6f - 0.05f * static_cast<float>(p) - shift;
            set.g[p][i] = 6.0f * std::exp(-50.0f * d * d) + (r > 2.4f ? 1.0f : 0.0f);
            const float before = i == 0 ? 0.0f : set.cn[p][i - 1];
            set.cn[p][i] = before + set.g[p][i] * r * r * step;
        }
    }
}

std::string text_of(const input::PdfSet& set, const char* format) {
    std::string text;
    const auto put = [&](float value) {
        std::array<char, 32> number{};
        std::snprintf(number.data(), number.size(), format, static_cast<double>(value));
        text += number.data();
    };
    for (std::size_t i = 0; i < set.r.size(); ++i) {
        put(set.r[i]);
        for (std::size_t p = 0; p < input::held_partials(set); ++p) {
            put(set.g[p][i]);
            put(set.cn[p][i]);
        }
        text += '\n';
    }
    return text;
}

std::array<input::PdfSet, 2> sets;
input::PdfSet loaded;
input::Column work_column;
std::array<float, 210000> values;  // 10000 bins, 1 + 2 * 10 numbers each

textio::Terminal silent_terminal() {
    textio::Terminal terminal;
    terminal.out.fd = ::open("/dev/null", O_WRONLY);
    return terminal;
}

// One file of 10000 bins; the limit takes the same numbers from memory.
void reading(benchmark::State& state, const char* format, std::int32_t partials) {
    fill(sets[0], partials, 0.002f, 0.01f);
    const std::string text = text_of(sets[0], format);
    const int file = support::file_holding(text);
    const int typed = support::file_holding(std::to_string(partials) + "\n");
    const std::string name = "/proc/self/fd/" + std::to_string(file);
    input::FileName fname{};
    fname.fill(' ');
    std::copy(name.begin(), name.end(), fname.begin());
    textio::Terminal terminal = silent_terminal();
    textio::Input buffers;
    beside(
        state,
        [&] {
            ::lseek(typed, 0, SEEK_SET);
            attach(terminal.in, typed);
            clear(loaded);
        },
        [&] { inpdf(loaded, fname, terminal, buffers); },
        [&] {
            const char* const at = text.data();
            benchmark::DoNotOptimize(bench::take_numbers(at, at + text.size(), values.data()));
        });
    if (loaded.nbins != input::maxbin) state.SkipWithError("the file was not read");
    ::close(file);
    ::close(typed);
}

// The second sample brought onto another grid; the limit is the interpolation of every value
// between points that are already known.
void resampling(benchmark::State& state) {
    fill(sets[0], 10, 0.002f, 0.0f);
    fill(sets[1], 10, 0.0021f, 0.01f);
    input::PdfSet& second = loaded;
    std::vector<std::size_t> below;
    std::vector<float> weight;
    const auto& old_grid = sets[1].r;
    for (const float r : sets[0].r) {
        std::size_t j = 0;
        while (j + 2 < old_grid.size() && old_grid[j + 1] < r) ++j;
        below.push_back(j);
        weight.push_back((old_grid[j + 1] - r) / (old_grid[j + 1] - old_grid[j]));
    }
    const auto interpolate = [&](const input::Column& column) {
        for (std::size_t i = 0; i < below.size(); ++i) {
            const std::size_t j = below[i];
            work_column[i] = (1.0f - weight[i]) * column[j + 1] + weight[i] * column[j];
        }
        benchmark::DoNotOptimize(work_column.data());
        benchmark::ClobberMemory();
    };
    beside(
        state, [&] { second = sets[1]; }, [&] { conbin(sets[0], second, work_column); },
        [&] {
            for (const auto& column : sets[1].g) interpolate(column);
            for (const auto& column : sets[1].cn) interpolate(column);
        });
}

// The sums of one window; the limit takes all that can be taken together in one loop, which leaves
// three: sums, then moments about the mean, then errors about the moments.
void bare_sums(std::span<const float> r, std::span<const float> g, float dr) {
    float weighted = 0.0f;
    float norm = 0.0f;
    float shell = 0.0f;
    float largest = 0.0f;
    for (std::size_t i = 0; i < r.size(); ++i) {
        weighted += g[i] * r[i];
        norm += g[i];
        shell += r[i] * r[i] * dr * g[i];
        largest = g[i] > largest ? g[i] : largest;
    }
    const float mean = weighted / norm;
    std::array<float, 5> moments{};
    for (std::size_t i = 0; i < r.size(); ++i) {
        const float d = r[i] - mean;
        const float term = d * (d * g[i]);
        moments[0] += term;
        moments[d > 0.0f ? 1 : 2] += term;
        moments[3] += d * term;
        moments[4] += d * (d * term);
    }
    std::array<float, 4> errors{};
    for (std::size_t i = 0; i < r.size(); ++i) {
        const float d = r[i] - mean;
        const std::array deviations{dr * g[i] * r[i] * r[i] - shell, d * d - moments[0] / norm,
                                    d * d * d - moments[3] / norm,
                                    d * d * d * d - moments[4] / norm};
        for (std::size_t k = 0; k < errors.size(); ++k) {
            errors[k] += deviations[k] * (deviations[k] * g[i]);
        }
    }
    benchmark::DoNotOptimize(largest);
    benchmark::DoNotOptimize(moments);
    benchmark::DoNotOptimize(errors);
}

constexpr std::array<std::int32_t, 2> first_partials{1, 1};

void window_statistics(benchmark::State& state) {
    fill(sets[0], 1, 0.002f, 0.0f);
    textio::Terminal terminal = silent_terminal();
    std::array<analysis::WindowStats, 1> stats;
    beside(
        state, [] {},
        [&] {
            benchmark::DoNotOptimize(pdfana(std::span(sets).first(1), first_partials, ilo, ihi,
                                            stats, work_column, terminal.out));
        },
        [&] {
            bare_sums(input::window_of(sets[0].r, ilo, ihi),
                      input::window_of(sets[0].g[0], ilo, ihi), sets[0].r[1] - sets[0].r[0]);
        });
}

struct Analysed {
    std::array<analysis::WindowStats, 2> stats;
    stats::ComparisonResult comparison;
};

stats::ComparisonResult compare(const Analysed& a, textio::Terminal& terminal) {
    return stats::statana(ilo, ihi, first_partials, 0, {a.stats[0].Rmea, a.stats[1].Rmea},
                          {a.stats[0].var, a.stats[1].var}, sets, terminal);
}

Analysed analyse(textio::Terminal& terminal) {
    Analysed a;
    fill(sets[0], 1, 0.002f, 0.0f);
    fill(sets[1], 1, 0.002f, 0.01f);
    if (pdfana(sets, first_partials, ilo, ihi, a.stats, work_column, terminal.out) ==
        analysis::Norm::zero) {
        std::abort();
    }
    for (auto& s : a.stats) complete_errors(ilo, ihi, s);
    a.comparison = compare(a, terminal);
    return a;
}

// The limit is the sum of chi-square and the special functions, called with what they need.
void comparison(benchmark::State& state) {
    textio::Terminal terminal = silent_terminal();
    const Analysed a = analyse(terminal);
    const auto u = input::window_of(sets[0].g[0], ilo, ihi);
    const auto v = input::window_of(sets[1].g[0], ilo, ihi);
    const stats::MeanTest& mean = a.comparison.mean;
    const float f = a.comparison.variance.stud;
    const float doff = a.comparison.distribution.doff;
    const auto d = static_cast<float>(ihi - ilo - 1);
    beside(
        state, [] {}, [&] { benchmark::DoNotOptimize(compare(a, terminal)); },
        [&] {
            float chsq = 0.0f;
            for (std::size_t i = 0; i < u.size(); ++i) {
                chsq += (u[i] - v[i]) * (u[i] - v[i]) / (u[i] + v[i]);
            }
            const float t = mean.doff / (mean.doff + mean.stud * mean.stud);
            benchmark::DoNotOptimize(stats::betai(0.5f * mean.doff, 0.5f, t, terminal));
            benchmark::DoNotOptimize(stats::betai(0.5f * d, 0.5f * d, d / (d + d * f), terminal));
            benchmark::DoNotOptimize(stats::betai(0.5f * d, 0.5f * d, d / (d + d / f), terminal));
            benchmark::DoNotOptimize(stats::gammq(0.5f * doff, 0.5f * chsq, terminal));
        });
}

void write_report(const Analysed& a, textio::Output& output) {
    for (const auto& stats : a.stats) {
        const input::Window window{.rmin = 1.4f, .rmax = 1.8f, .ilo = ilo, .ihi = ihi};
        driver::write_sample_block(output, "sample", 1, window, stats);
    }
    driver::write_statistics_block(output, a.comparison);
    flush(output);
}

// The report of two samples; the limit copies and writes a finished one, and turns as many reals
// into text as it holds, by the fastest routine of the library: the one for the shortest digits.
void report(benchmark::State& state) {
    textio::Terminal terminal = silent_terminal();
    const Analysed a = analyse(terminal);
    const std::string finished =
        support::play("", [&](textio::Terminal& t) { write_report(a, t.out); });
    std::array<float, 54> reals{};
    for (std::size_t i = 0; i < reals.size(); ++i) {
        reals[i] = sets[0].g[0][static_cast<std::size_t>(ilo) + 2 * i];
    }
    std::array<char, 4096> copy{};
    beside(
        state, [] {}, [&] { write_report(a, terminal.out); },
        [&] {
            for (const float real : reals) {
                benchmark::DoNotOptimize(std::to_chars(copy.data(), copy.data() + 16, real));
            }
            std::memcpy(copy.data(), finished.data(), finished.size());
            if (::write(terminal.out.fd, copy.data(), finished.size()) < 0) std::abort();
        });
}

}  // namespace

int main(int argc, char** argv) {
    const auto add = [](const char* name, auto run) {
        benchmark::RegisterBenchmark(name, run)->UseManualTime()->Unit(benchmark::kMicrosecond);
    };
    add("reading/%12.6f/10", [](auto& state) { reading(state, "%12.6f", 10); });
    add("reading/%12.6f/1", [](auto& state) { reading(state, "%12.6f", 1); });
    add("reading/%.6E/10", [](auto& state) { reading(state, " %.6E", 10); });
    add("reading/%.6E/1", [](auto& state) { reading(state, " %.6E", 1); });
    add("resampling", resampling);
    add("window_statistics", window_statistics);
    add("comparison", comparison);
    add("report", report);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
}
