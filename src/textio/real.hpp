// The arithmetic that every printed digit rests on: IEEE 754 binary32, evaluated as written.
// Every file that computes with reals includes this header.
#pragma once

#include <cfloat>
#include <climits>
#include <limits>

static_assert(std::numeric_limits<float>::is_iec559 && FLT_MANT_DIG == 24 && FLT_MAX_EXP == 128,
              "float must be IEEE 754 binary32");
static_assert(std::numeric_limits<double>::is_iec559 && DBL_MANT_DIG == 53,
              "double must be IEEE 754 binary64");
static_assert(FLT_EVAL_METHOD == 0, "float expressions must not carry extra precision");
static_assert(CHAR_BIT == 8);
#ifdef __FAST_MATH__
#error "options that change the value of floating-point expressions are not allowed"
#endif
