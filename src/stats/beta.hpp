// The incomplete beta function.
#pragma once

#include "textio/terminal.hpp"

namespace dorvek::stats {

// I_x(a, b), the regularised incomplete beta function, for a > 0, b > 0, 0 <= x <= 1. Below
// x = (a + 1) / (a + b + 2) by its continued fraction, from there on through the symmetry
// I_x(a, b) = 1 - I_{1-x}(b, a) (DLMF 8.17.4).
// Accuracy: relative error below 2e-6, 4e-5 and 1e-3 for N = 9, 99 and 999 (windows of 10, 100 and
// 1000 bins), where (2a, 2b) is (N, 1), (N - 1, N - 1), (1, N) or (N, 3N), and I above 1e-12.
// A bad x or slow convergence pauses with a message; then the computation goes on, and its
// result means nothing after the former and is the last estimate after the latter. An x that is not
// a number passes as good and does not converge.
[[nodiscard]] float betai(float a, float b, float x, textio::Terminal& terminal);

// The continued fraction for I_x(a, b) (DLMF 8.17.22), evaluated forwards, two terms at a time.
// Domain and accuracy are those of betai, which calls it below x = (a + 1) / (a + b + 2).
[[nodiscard]] float betacf(float a, float b, float x, textio::Terminal& terminal);

}  // namespace dorvek::stats
