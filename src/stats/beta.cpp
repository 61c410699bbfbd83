#include "stats/beta.hpp"

#include <cmath>

#include "stats/convergence.hpp"
#include "stats/gamma.hpp"
#include "textio/real.hpp"

namespace dorvek::stats {

float betai(float a, float b, float x, textio::Terminal& terminal) {
    if (x < 0.0f || x > 1.0f) pause(terminal, "bad argument X in BETAI");
    float factor = 0.0f;
    if (x != 0.0f && x != 1.0f) {
        factor = std::exp(gammln(a + b) - gammln(a) - gammln(b) + a * std::log(x) +
                          b * std::log(1.0f - x));
    }
    if (x < (a + 1.0f) / (a + b + 2.0f)) return factor * betacf(a, b, x, terminal) / a;
    return 1.0f - factor * betacf(b, a, 1.0f - x, terminal) / b;
}

float betacf(float a, float b, float x, textio::Terminal& terminal) {
    // Numerators and denominators of two successive convergents; q1 is kept at 1.
    float p0 = 1.0f;
    float q0 = 1.0f;
    float p1 = 1.0f;
    float q1 = 1.0f - (a + b) * x / (a + 1.0f);
    for (int pass = 1; pass <= itmax; ++pass) {
        const auto m = static_cast<float>(pass);
        const float two_m = m + m;
        const float even = m * (b - m) * x / ((a - 1.0f + two_m) * (a + two_m));
        const float p_even = p1 + even * p0;
        const float q_even = q1 + even * q0;
        const float odd = -(a + m) * (a + b + m) * x / ((a + two_m) * (a + 1.0f + two_m));
        const float p_odd = p_even + odd * p1;
        const float q_odd = q_even + odd * q1;
        const float previous = p1;
        p0 = p_even / q_odd;
        q0 = q_even / q_odd;
        p1 = p_odd / q_odd;
        q1 = 1.0f;
        if (std::abs(p1 - previous) < eps * std::abs(p1)) return p1;
    }
    pause(terminal, "A or B too big, or ITMAX too small");
    return p1;
}

}  // namespace dorvek::stats
