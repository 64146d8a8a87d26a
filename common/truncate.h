// Float-to-integer truncation toward zero, as the effect and the panel use it for the rate
// choice and knob steps. C++ leaves the conversion of NaN or of a value no int32 holds undefined;
// here it gives INT32_MIN, which is what an x86 processor's truncating conversion gives.
#pragma once

#include <cstdint>

inline int32_t truncateToInt32(double value)
{
    if (value > -2147483649.0 && value < 2147483648.0)
        return static_cast<int32_t>(value);
    return INT32_MIN;
}
