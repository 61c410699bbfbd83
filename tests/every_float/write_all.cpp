// Compares the text of every float, 2^32 of them, with its exact decimal expansion rounded half up.
// Also counts the exact ties among the positive floats: they are where rounding half up and
// rounding half to even part.

#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

#include "exact_decimal.hpp"
#include "sweep.hpp"
#include "writing.hpp"

namespace {

namespace exact = dorvek::exact;

// Positive floats that lie midway between two numbers of the digits they are written with, and
// those of them that rounding half to even would write differently. Positional form first.
struct Ties {
    std::array<std::uint64_t, 2> count{};
    std::array<std::uint64_t, 2> not_half_even{};
};

void count_tie(float magnitude, const exact::Decimal& decimal, Ties& ties) {
    const std::size_t kept = exact::digits_written(magnitude);
    if (digit(decimal, kept) != '5') return;
    for (std::size_t i = kept + 1; i < decimal.count; ++i) {
        if (decimal.digits[i] != '0') return;
    }
    const std::size_t form = exact::is_positional(magnitude) ? 0 : 1;
    ++ties.count[form];
    if (digit(decimal, kept - 1) % 2 == 0) ++ties.not_half_even[form];
}

// Every float of one piece, with either sign.
Ties check(exact::Piece piece, exact::Differences& differences) {
    Ties ties;
    exact::Decimal decimal;
    const bool finite = std::isfinite(std::bit_cast<float>(piece.first));
    exact::Walk walk = exact::walk_floats(finite ? piece.first : 0, 2 * piece.stride);
    for (std::uint32_t bits = piece.first; bits < piece.end; bits += piece.stride) {
        const auto magnitude = std::bit_cast<float>(bits);
        if (finite) {
            expand(walk, decimal);
            exact::add(walk.value, walk.step);
            count_tie(magnitude, decimal, ties);
        }
        if (std::string what = exact::miswritten(bits, decimal); !what.empty()) {
            report(differences, bits, what);
        }
    }
    return ties;
}

}  // namespace

int main(int argc, char** argv) {
    std::array<std::atomic<std::uint64_t>, 4> ties{};
    const int status =
        exact::sweep(argc, argv, 0x80000000U, [&](exact::Piece piece, auto& differences) {
            const Ties found = check(piece, differences);
            for (std::size_t form = 0; form < 2; ++form) {
                ties[form] += found.count[form];
                ties[2 + form] += found.not_half_even[form];
            }
        });
    std::printf("exact ties: %llu positional, %llu in exponent form\n",
                static_cast<unsigned long long>(ties[0]), static_cast<unsigned long long>(ties[1]));
    std::printf("written otherwise than half to even: %llu and %llu\n",
                static_cast<unsigned long long>(ties[2]), static_cast<unsigned long long>(ties[3]));
    return status;
}
