// The logarithm of the gamma function and the incomplete gamma function.
#pragma once

#include "textio/terminal.hpp"

namespace dorvek::stats {

// ln Gamma(xx) for xx > 0, by a six-term series of Lanczos (1964), computed in double precision.
[[nodiscard]] float gammln(float xx);

// Q(a, x) = 1 - P(a, x), the complemented regularised incomplete gamma function, for a > 0,
// x >= 0. Below x = a + 1 it is 1 less the series for P, from there on the continued fraction.
// A bad argument or slow convergence pauses with a message; then the computation goes on, and its
// result means nothing after the former and is the last estimate after the latter.
[[nodiscard]] float gammq(float a, float x, textio::Terminal& terminal);

// P(a, x) by its series (DLMF 8.11.4), 0 for x <= 0; also sets gln = ln Gamma(a).
[[nodiscard]] float gser(float a, float x, float& gln, textio::Terminal& terminal);

// Q(a, x) by its continued fraction (DLMF 8.9.2), evaluated forwards; also sets gln = ln Gamma(a).
[[nodiscard]] float gcf(float a, float x, float& gln, textio::Terminal& terminal);

}  // namespace dorvek::stats
