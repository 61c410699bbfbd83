// Trying floats by the million: all cores, a progress line, the first differences.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace dorvek::exact {

// The bit patterns first, first + stride, ... below end. They share one exponent.
struct Piece {
    std::uint32_t first;
    std::uint32_t end;
    std::uint32_t stride;
};
inline constexpr std::uint32_t piece_size = 1U << 20U;

// The first differences found; there may be many.
struct Differences {
    std::mutex mutex;
    std::uint64_t count = 0;
};

inline void report(Differences& differences, std::uint32_t bits, const std::string& what) {
    const std::lock_guard lock(differences.mutex);
    if (++differences.count <= 20) {
        std::fprintf(stderr, "\n%08X: %s\n", static_cast<unsigned>(bits), what.c_str());
    }
}

// Calls check(piece, differences) for pieces that together hold the bit patterns 0 .. end - 1, or,
// given an argument, every stride-th one of each piece. Returns the exit status.
template <typename Check>
int sweep(int argc, char** argv, std::uint32_t end, Check check) {
    const auto stride =
        static_cast<std::uint32_t>(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1);
    if (stride == 0 || stride > piece_size) {
        std::fprintf(stderr, "usage: %s [STRIDE]    (odd, to meet odd floats as well)\n", argv[0]);
        return 2;
    }
    const std::uint32_t pieces = end / piece_size;
    Differences differences;
    std::atomic<std::uint32_t> next{0};
    std::atomic<std::uint32_t> done{0};
    const auto start = std::chrono::steady_clock::now();
    const auto work = [&] {
        for (std::uint32_t piece = next++; piece < pieces; piece = next++) {
            const std::uint32_t first = piece * piece_size;
            check(
                Piece{.first = first + piece % stride, .end = first + piece_size, .stride = stride},
                differences);
            const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
            const double part = static_cast<double>(++done) / pieces;
            std::fprintf(stderr, "\r%5.1f %%, %.0f s, %.0f s to go ", 100.0 * part, spent.count(),
                         spent.count() * (1.0 / part - 1.0));
        }
    };
    std::vector<std::thread> threads(std::max(std::thread::hardware_concurrency(), 1U));
    for (std::thread& thread : threads) thread = std::thread(work);
    for (std::thread& thread : threads) thread.join();
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    std::printf("\n%.0f s on %zu threads, %llu differences\n", spent.count(), threads.size(),
                static_cast<unsigned long long>(differences.count));
    return differences.count == 0 ? 0 : 1;
}

}  // namespace dorvek::exact
