// Two samples' peaks compared by three tests.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "stats/special_functions.hpp"

namespace dorvek::stats {

// The fields bear the labels of the report. A significance sgfc is the probability of a statistic
// at least as far out by chance alone: a small one speaks for a real difference.
struct MeanTest {
    float stud = 0.0f;  // Student's t, positive where sample 1 has the larger mean
    float doff = 0.0f;  // its degrees of freedom, not made whole
    float sgfc = 0.0f;  // two-tailed significance
};

struct VarianceTest {
    float stud = 0.0f;  // F, the larger variance over the smaller
    float sgfc = 0.0f;  // two-tailed significance
};

struct DistributionTest {
    float doff = 0.0f;  // degrees of freedom, a whole number
    float chsq = 0.0f;  // chi-square
    float sgfc = 0.0f;  // its significance
};

struct ComparisonResult {
    MeanTest mean;
    VarianceTest variance;
    DistributionTest distribution;
};

// One value for each sample of the comparison.
using Pair = std::array<float, 2>;

// The tests check nothing: zero divisors give infinities and not-a-numbers. Arguments out of the
// range of a special function, and functions that do not converge, are told in `messages`.

// t-test of two means with unequal variances (Welch 1947, Satterthwaite 1946).
// n1, n2 are sample sizes.
[[nodiscard]] MeanTest tutest(std::int32_t n1, std::int32_t n2, Pair mean, Pair var,
                              Messages& messages);

// F-test of two variances, both tails. n1, n2 are sample sizes.
[[nodiscard]] VarianceTest ftest(std::int32_t n1, std::int32_t n2, Pair var, Messages& messages);

// Chi-square test of two binned distributions u and v of equal lengths with `constraints`
// constraints in all: doff is the number of bins, less 2, less the constraints, less the bins that
// are exactly zero in both, which are left out.
[[nodiscard]] DistributionTest ditest(std::span<const float> u, std::span<const float> v,
                                      std::int64_t constraints, Messages& messages);

// All three tests of two windows u and v of equal lengths, given their peaks' means and variances.
// The size of both samples is taken as one less than their bins.
[[nodiscard]] ComparisonResult statana(std::span<const float> u, std::span<const float> v,
                                       std::int64_t constraints, Pair mean, Pair var,
                                       Messages& messages);

}  // namespace dorvek::stats
