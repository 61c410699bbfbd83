// Writes and reads every float, or, given an odd number, every so many.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "support/reals.hpp"

int main(int argc, char** argv) {
    namespace checks = dorvek::checks;
    const std::uint64_t stride = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1;
    if (stride % 2 == 0) {
        std::fprintf(stderr, "usage: %s [STRIDE]    (odd, to meet odd floats as well)\n", argv[0]);
        return 2;
    }
    const unsigned cores = std::max(std::thread::hardware_concurrency(), 1U);
    std::atomic<unsigned> differences = 0;
    const auto try_share = [&](unsigned core) {
        for (std::uint64_t turn = core; turn * stride < checks::minus; turn += cores) {
            const auto bits = static_cast<std::uint32_t>(turn * stride);
            std::string fault = checks::miswritten(bits);
            if (fault.empty() && bits < checks::infinity) fault = checks::misread(bits, turn);
            if (!fault.empty() && ++differences <= 20) {
                std::fprintf(stderr, "\r%08X: %s\n", static_cast<unsigned>(bits), fault.c_str());
            }
            if (turn % (1U << 22U) == 0) std::fprintf(stderr, "\r%2.0f %%", 0x1p-31 * 100 * bits);
        }
    };
    std::vector<std::jthread> threads;
    for (unsigned core = 0; core < cores; ++core) threads.emplace_back(try_share, core);
    threads.clear();  // waits for them
    std::printf("\n%u differences\n", differences.load());
    return differences == 0 ? 0 : 1;
}
