/// @file
/// Float to int for values that come from outside (a command line, an effect's default):
/// a plain cast of a float beyond int's range or of NaN is undefined behaviour.
#pragma once

#include <climits>
#include <cmath>

/// `value` truncated toward zero and clamped to int's range; NaN gives 0.
inline int QorSaturatingInt(float value)
{
    if (std::isnan(value))
        return 0;
    // INT_MAX is not a float; 2^31 is, and every float below it converts exactly.
    if (value >= 2147483648.0f)
        return INT_MAX;
    if (value <= -2147483648.0f)
        return INT_MIN;
    return static_cast<int>(value);
}
