// When a series or a continued fraction has converged, and when it is given up.
#pragma once

namespace dorvek::stats {

inline constexpr float eps = 3.0e-7f;  // relative change from one pass to the next
inline constexpr int itmax = 100;      // passes

}  // namespace dorvek::stats
