// Reads the shortest decimal of every finite float and, for every two neighbours, the decimal
// exactly midway (up to 113 digits, read as the even one) and the two that differ from it by one
// unit of a further digit (read as the lower and as the upper float). In every spelling, with
// either sign; the last pair are the largest float and infinity.

#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include "exact_decimal.hpp"
#include "spelling.hpp"
#include "sweep.hpp"
#include "textio/free_form.hpp"

namespace {

namespace exact = dorvek::exact;
namespace textio = dorvek::textio;

// The spelling changes with every float, the sign of the longer decimals with every eighth.
void check(exact::Piece piece, exact::Differences& differences) {
    constexpr std::uint32_t minus = 0x80000000U;
    exact::Walk walk = exact::walk_floats(piece.first, 2 * piece.stride, 1);
    exact::Decimal midpoint;
    std::string line;
    for (std::uint32_t bits = piece.first; bits < piece.end; bits += piece.stride) {
        const std::uint32_t turn = bits / piece.stride;
        const auto spelling = static_cast<unsigned>(turn % exact::spellings);
        const std::uint32_t sign = turn / exact::spellings % 2 == 0 ? 0 : minus;
        line.clear();
        exact::spell_shortest(line, std::bit_cast<float>(bits), spelling);
        exact::spell_shortest(line += " -", std::bit_cast<float>(bits),
                              (spelling + 3) % exact::spellings);
        expand(walk, midpoint);
        exact::add(walk.value, walk.step);
        exact::spell_with_neighbours(line, midpoint, spelling, sign == 0 ? " " : " -");

        const std::array expected{bits, bits | minus, bits | sign, (bits + bits % 2) | sign,
                                  (bits + 1) | sign};
        std::array<float, expected.size()> got{};
        textio::ScanState state;
        const textio::Scan scan = textio::scan_line(line, state, got);
        if (scan != textio::Scan::complete ||
            std::bit_cast<std::array<std::uint32_t, expected.size()>>(got) != expected) {
            report(differences, bits, "of this float and its upper midpoint, wrong: " + line);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    return exact::sweep(argc, argv, 0x7F800000U, check);
}
