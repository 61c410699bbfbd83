// What independent observations tell of a mean: its standard error, its interval, what the choice
// of a window adds, and the significance of a difference. Mathematics, in double precision.
//
// Terms and formulas are those of Grossfield et al., "Best practices for quantification of
// uncertainty and sampling quality in molecular simulations", LiveCoMS 1 (2018) 5067, and, for the
// budget, of the GUM: "Guide to the expression of uncertainty in measurement", JCGM 100:2008.
#pragma once

#include <span>
#include <vector>

namespace dorvek::tools {

// n observations: their mean, and the sum of the squared deviations from it.
struct Sample {
    double n = 0;
    double mean = 0;
    double squares = 0;
};

// A value, its standard error, and the degrees of freedom of that.
struct Estimate {
    double value;
    double se;
    double doff;
};

// The standard uncertainty that the choice of a window brings, the combined standard uncertainty
// with its effective degrees of freedom, and half the width of the interval of 95 %.
struct Budget {
    double window;
    double u;
    double doff;
    double U95;
};

// Updates mean and deviations by one observation (Welford 1962). Equal values deviate by exactly
// nothing. Not a number and infinity both make the mean not a number, in whatever order they come.
void add(Sample& sample, double value);

// The experimental standard deviation, with n - 1; not a number of a single observation.
[[nodiscard]] double sd_of(const Sample& sample);

// The mean of the observations; its standard error is sd / sqrt(n), with n - 1 degrees of freedom.
[[nodiscard]] Estimate mean_of(const Sample& sample);

// The difference b - a of two means by Welch's test, for unequal variances (Welch 1947,
// Satterthwaite 1946). Of pairs, take the mean of their differences instead.
[[nodiscard]] Estimate difference_of(const Sample& a, const Sample& b);

// Half the width of the 95 % confidence interval: t se, t being Student's. `doff` may be infinite.
[[nodiscard]] double ci95_of(double se, double doff);

// The two-tailed significance of Student's t; not a number without degrees of freedom.
[[nodiscard]] double significance_of(double t, double doff);

// The budget of an estimate whose value is `elsewhere` at other windows, which are taken to be as
// good: a rectangular distribution about the estimate, as wide on either side as the largest
// deviation (JCGM 100:2008, 4.3.7), of infinitely many degrees of freedom; effective ones by the
// Welch-Satterthwaite formula (G.4.1). No standard error makes them infinite.
[[nodiscard]] Budget budget_of(const Estimate& estimate, std::span<const double> elsewhere);

// The significances of one family, adjusted so that the least is what it says however many there
// are (Holm 1979, as p.adjust of R has it). What is not a number stays so and is not counted.
[[nodiscard]] std::vector<double> holm(std::span<const double> significances);

}  // namespace dorvek::tools
