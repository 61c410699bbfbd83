#include "stats/special_functions.hpp"

#include <array>
#include <cassert>
#include <cmath>
#include <string_view>

#include "textio/real.hpp"

namespace dorvek::stats {
namespace {

// A series or a continued fraction has converged when a pass changes it by less than this,
// relative: two and a half times the spacing of floats above 1, for rounding alone can change it by
// about one.
constexpr float eps = 3.0e-7f;
// After so many passes it is given up. The series takes 5 sqrt(a) near x = a, and a is half the
// bins of a window: that is enough for 800 bins.
constexpr int itmax = 100;

constexpr std::string_view bad_argument = " ";
constexpr std::string_view bad_x = "bad argument X in BETAI";
constexpr std::string_view slow_gamma = "A too large, ITMAX too small";
constexpr std::string_view slow_beta = "A or B too big, or ITMAX too small";

void say(Messages& messages, std::string_view message) {
    assert(messages.count < messages.text.size());
    messages.text[messages.count++] = message;
}

}  // namespace

float gammln(float xx) {
    // Lanczos's own for his gamma = 5, to ten digits; the constant term 1.000000000178 is taken
    // as 1. To solve for a series that is exact at xx = 1 .. 7 gives the same but for 1e-5 in the
    // last two.
    constexpr std::array coefficients{76.18009173,  -86.50532033,   24.01409822,
                                      -1.231739516, 0.120858003e-2, -0.536382e-5};
    constexpr double root_of_two_pi = 2.50662827465;
    double x = static_cast<double>(xx) - 1.0;
    double t = x + 5.5;
    t = (x + 0.5) * std::log(t) - t;
    double series = 1.0;
    for (const double coefficient : coefficients) {
        x += 1.0;
        series += coefficient / x;
    }
    return static_cast<float>(t + std::log(root_of_two_pi * series));
}

float gammq(float a, float x, Messages& messages) {
    if (x < 0.0f || a <= 0.0f) say(messages, bad_argument);
    if (x < a + 1.0f) return 1.0f - gser(a, x, messages);
    return gcf(a, x, messages);
}

float gser(float a, float x, Messages& messages) {
    if (x <= 0.0f) {
        if (x < 0.0f) say(messages, bad_argument);
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
    if (!converged) say(messages, slow_gamma);
    return sum * std::exp(a * std::log(x) - x - gammln(a));
}

float gcf(float a, float x, Messages& messages) {
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
    if (!converged) say(messages, slow_gamma);
    return std::exp(a * std::log(x) - x - gammln(a)) * estimate;
}

float betai(float a, float b, float x, Messages& messages) {
    if (x < 0.0f || x > 1.0f) say(messages, bad_x);
    float factor = 0.0f;
    if (x != 0.0f && x != 1.0f) {
        factor = std::exp(gammln(a + b) - gammln(a) - gammln(b) + a * std::log(x) +
                          b * std::log(1.0f - x));
    }
    if (x < (a + 1.0f) / (a + b + 2.0f)) return factor * betacf(a, b, x, messages) / a;
    return 1.0f - factor * betacf(b, a, 1.0f - x, messages) / b;
}

float betacf(float a, float b, float x, Messages& messages) {
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
    say(messages, slow_beta);
    return p1;
}

}  // namespace dorvek::stats
