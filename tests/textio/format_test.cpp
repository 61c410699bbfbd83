#include "textio/format.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string_view>

namespace dorvek::textio {
namespace {

struct RealCase {
    float value;
    std::string_view text;
};

void expect_each(std::initializer_list<RealCase> cases) {
    NumberText text{};
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(format_real(value, text), expected) << std::hexfloat << value;
    }
}

TEST(FormatInteger, HasASignField) {
    constexpr struct {
        std::int32_t value;
        std::string_view text;
    } cases[] = {{0, "  0"},    {7, "  7"},
                 {-1, " -1"},   {2147483647, "  2147483647"},
                 {-12, " -12"}, {-2147483647 - 1, " -2147483648"}};
    NumberText text{};
    for (const auto& [value, expected] : cases) EXPECT_EQ(format_integer(value, text), expected);
}

TEST(FormatReal, WritesSixDigitsFromATenthToAMillion) {
    expect_each({
        {0.1f, "  0.100000"},
        {0.5f, "  0.500000"},
        {3.14159274f, "  3.14159"},
        {-3.370999f, " -3.37100"},
        {123.456f, "  123.456"},
        {100000.0f, "  100000."},
        {999999.0f, "  999999."},
    });
}

TEST(FormatReal, ChangesFormWhereTheRoundedValueDoes) {
    expect_each({
        // 0.09999995 is a tie at the seventh decimal that no float hits: its neighbours decide.
        {0.09999994933605194f, "  9.999995E-02"},
        {0.09999995678663254f, "  0.100000"},
        {0.09999f, "  9.999000E-02"},
        {0.99999946f, "  0.999999"},
        {0.9999995f, "  1.00000"},  // 0.99999952316...
        {9.999996f, "  10.0000"},   // the point moves with the carry
        {999999.4375f, "  999999."},
        // Six digits do not hold these any more.
        {999999.5f, "  9.999995E+05"},
        {999999.9375f, "  9.999999E+05"},
        {1000000.0f, "  1.000000E+06"},
    });
}

TEST(FormatReal, RoundsExactTiesUp) {
    expect_each({
        {100000.5f, "  100001."},
        {100001.5f, "  100002."},
        {12345.25f, "  12345.3"},
        {-12345.25f, " -12345.3"},
        {0.15625f, "  0.156250"},
        {1.0000005f, "  1.00000"},        // 1.00000047..., no tie
        {2097152.25f, "  2.097152E+06"},  // below the tie
        {2097152.5f, "  2.097153E+06"},   // a tie after an even digit
        {2097153.5f, "  2.097154E+06"},   // a tie after an odd digit
        {10000005.0f, "  1.000001E+07"},
        {0.0078125f, "  7.812500E-03"},
        {0.003814697265625f, "  3.814697E-03"},
        {0.00048828125f, "  4.882813E-04"},  // 2^-11, a tie at the seventh digit
    });
}

TEST(FormatReal, ReachesTheEndsOfTheRange) {
    expect_each({
        {0.0f, "  0.000000"},
        {-0.0f, "  0.000000"},
        {std::numeric_limits<float>::denorm_min(), "  1.401298E-45"},
        {std::numeric_limits<float>::min(), "  1.175494E-38"},
        {-std::numeric_limits<float>::max(), " -3.402823E+38"},
    });
}

TEST(FormatReal, NamesWhatIsNotFinite) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    expect_each({
        {infinity, "  INF"},
        {-infinity, " -INF"},
        {std::copysign(nan, 1.0f), "  NaN"},
        {std::copysign(nan, -1.0f), " -NaN"},
    });
}

}  // namespace
}  // namespace dorvek::textio
