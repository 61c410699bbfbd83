// The incomplete gamma and beta functions, from which the tests have their significances.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace dorvek::stats {

// What the functions have to say of their arguments and their convergence, in the order in which
// they came to say it; the user reads it before the result. A comparison of two samples says at
// most eight things: two for each incomplete beta function, two for the incomplete gamma function.
struct Messages {
    std::array<std::string_view, 8> text{};
    std::size_t count = 0;
};

// ln Gamma(xx) for xx > 0, by a six-term series of Lanczos (1964), computed in double precision.
// Accuracy: error below 6e-8 (1 + |ln Gamma|) for xx in [0.5, 500], the rounding to single
// precision.
[[nodiscard]] float gammln(float xx);

// A bad argument or slow convergence is added to `messages`; then the computation goes on, and its
// result means nothing after the former and is the last estimate after the latter.

// Q(a, x) = 1 - P(a, x), the complemented regularised incomplete gamma function, for a > 0,
// x >= 0. Below x = a + 1 it is 1 less the series for P, from there on the continued fraction.
// Accuracy: relative error below 7e-7, 3e-5 and 4e-4 for a = 4, 49 and 499 (windows of 10, 100 and
// 1000 bins) and x within eight standard deviations of a, Q above 1e-12. Near x = a the passes do
// not suffice from about a = 400 on.
[[nodiscard]] float gammq(float a, float x, Messages& messages);

// P(a, x) by its series (DLMF 8.11.4), 0 for x <= 0. Domain and accuracy are those of gammq, which
// calls it below x = a + 1.
[[nodiscard]] float gser(float a, float x, Messages& messages);

// Q(a, x) by its continued fraction (DLMF 8.9.2), evaluated forwards. Domain and accuracy are those
// of gammq, which calls it from x = a + 1 on.
[[nodiscard]] float gcf(float a, float x, Messages& messages);

// I_x(a, b), the regularised incomplete beta function, for a > 0, b > 0, 0 <= x <= 1. Below
// x = (a + 1) / (a + b + 2) by its continued fraction, from there on through the symmetry
// I_x(a, b) = 1 - I_{1-x}(b, a) (DLMF 8.17.4).
// Accuracy: relative error below 2e-6, 4e-5 and 1e-3 for N = 9, 99 and 999 (windows of 10, 100 and
// 1000 bins), where (2a, 2b) is (N, 1), (N - 1, N - 1), (1, N) or (N, 3N), and I above 1e-12.
// An x that is not a number passes as good and does not converge.
[[nodiscard]] float betai(float a, float b, float x, Messages& messages);

// The continued fraction for I_x(a, b) (DLMF 8.17.22), evaluated forwards, two terms at a time.
// Domain and accuracy are those of betai, which calls it below x = (a + 1) / (a + b + 2).
[[nodiscard]] float betacf(float a, float b, float x, Messages& messages);

}  // namespace dorvek::stats
