// Reads the shortest decimal of every finite float and, for every two neighbours, the decimal
// exactly midway (up to 113 digits, read as the even one) and the two that differ from it by one
// unit of a further digit (read as the lower and as the upper float). In every spelling, with
// either sign; the last pair are the largest float and infinity.

#include <cstdint>
#include <string>

#include "exact_decimal.hpp"
#include "reading.hpp"
#include "sweep.hpp"

namespace {

namespace exact = dorvek::exact;

void check(exact::Piece piece, exact::Differences& differences) {
    exact::Walk walk = exact::walk_floats(piece.first, 2 * piece.stride, 1);
    exact::Decimal midway;
    for (std::uint32_t bits = piece.first; bits < piece.end; bits += piece.stride) {
        expand(walk, midway);
        exact::add(walk.value, walk.step);
        if (std::string line = exact::misread(bits, midway, bits / piece.stride); !line.empty()) {
            report(differences, bits, "one of these is read wrongly: " + line);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    return exact::sweep(argc, argv, 0x7F800000U, check);
}
