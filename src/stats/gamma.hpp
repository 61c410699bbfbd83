// The logarithm of the gamma function and the incomplete gamma function.
#pragma once

#include "textio/terminal.hpp"

namespace dorvek::stats {

// ln Gamma(xx) for xx > 0, by a six-term series of Lanczos (1964), computed in double precision.
// Accuracy: error below 6e-8 (1 + |ln Gamma|) for xx in [0.5, 500], the rounding to single
// precision.
[[nodiscard]] float gammln(float xx);

// Q(a, x) = 1 - P(a, x), the complemented regularised incomplete gamma function, for a > 0,
// x >= 0. Below x = a + 1 it is 1 less the series for P, from there on the continued fraction.
// Accuracy: relative error below 7e-7, 3e-5 and 4e-4 for a = 4, 49 and 499 (windows of 10, 100 and
// 1000 bins) and x within eight standard deviations of a, Q above 1e-12. Near x = a the passes do
// not suffice from about a = 400 on.
// A bad argument or slow convergence pauses with a message; then the computation goes on, and its
// result means nothing after the former and is the last estimate after the latter.
[[nodiscard]] float gammq(float a, float x, textio::Terminal& terminal);

// P(a, x) by its series (DLMF 8.11.4), 0 for x <= 0; also sets gln = ln Gamma(a). Domain and
// accuracy are those of gammq, which calls it below x = a + 1.
[[nodiscard]] float gser(float a, float x, float& gln, textio::Terminal& terminal);

// Q(a, x) by its continued fraction (DLMF 8.9.2), evaluated forwards; also sets gln = ln Gamma(a).
// Domain and accuracy are those of gammq, which calls it from x = a + 1 on.
[[nodiscard]] float gcf(float a, float x, float& gln, textio::Terminal& terminal);

}  // namespace dorvek::stats
