#include "stats/gamma.hpp"

#include <array>
#include <cmath>
#include <string_view>

#include "stats/convergence.hpp"
#include "textio/real.hpp"

namespace dorvek::stats {
namespace {

constexpr std::string_view bad_argument = " ";
constexpr std::string_view no_convergence = "A too large, ITMAX too small";

}  // namespace

float gammln(float xx) {
    constexpr std::array coefficients{76.18009173,  -86.50532033,   24.01409822,
                                      -1.231739516, 0.120858003e-2, -0.536382e-5};
    double x = static_cast<double>(xx) - 1.0;
    double t = x + 5.5;
    t = (x + 0.5) * std::log(t) - t;
    double series = 1.0;
    for (const double coefficient : coefficients) {
        x += 1.0;
        series += coefficient / x;
    }
    return static_cast<float>(t + std::log(2.50662827465 * series));
}

float gammq(float a, float x, textio::Terminal& terminal) {
    if (x < 0.0f || a <= 0.0f) pause(terminal, bad_argument);
    float gln = 0.0f;
    if (x < a + 1.0f) return 1.0f - gser(a, x, gln, terminal);
    return gcf(a, x, gln, terminal);
}

float gser(float a, float x, float& gln, textio::Terminal& terminal) {
    gln = gammln(a);
    if (x <= 0.0f) {
        if (x < 0.0f) pause(terminal, bad_argument);
        return 0.0f;
    }
    float w = a;
    float term = 1.0f / a;
    float sum = term;
    bool converged = false;
    for (int n = 1; n <= itmax && !converged; ++n) {
        w += 1.0f;
        term = term * x / w;
        sum += term;
        converged = std::abs(term) < eps * std::abs(sum);
    }
    if (!converged) pause(terminal, no_convergence);
    return sum * std::exp(a * std::log(x) - x - gln);
}

float gcf(float a, float x, float& gln, textio::Terminal& terminal) {
    gln = gammln(a);
    // Numerators and denominators of two successive convergents, renormalised by f.
    float a0 = 1.0f;
    float a1 = x;
    float b0 = 0.0f;
    float b1 = 1.0f;
    float f = 1.0f;
    float estimate = 0.0f;
    float previous = 0.0f;
    bool converged = false;
    for (int n = 1; n <= itmax && !converged; ++n) {
        const auto real_n = static_cast<float>(n);
        a0 = (a1 + a0 * (real_n - a)) * f;
        b0 = (b1 + b0 * (real_n - a)) * f;
        a1 = x * a0 + real_n * f * a1;
        b1 = x * b0 + real_n * f * b1;
        if (a1 == 0.0f) continue;
        f = 1.0f / a1;
        estimate = b1 * f;
        converged = std::abs((estimate - previous) / estimate) < eps;
        previous = estimate;
    }
    if (!converged) pause(terminal, no_convergence);
    return std::exp(a * std::log(x) - x - gln) * estimate;
}

}  // namespace dorvek::stats
