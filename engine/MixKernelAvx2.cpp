// Every header with inline functions comes before the target switch: an inline function compiled
// for a wider set here could be the copy the linker keeps for baseline callers.
#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "engine/MixKernel.h"
#include "engine/OscillatorSteps.h"

// Everything from here on may use AVX2 and BMI2 (never FMA: products and sums stay separately
// rounded; BMI2 shifts by any register, which the index arithmetic needs twice at once).
// Only mixAvx2 is reachable from outside, and the engine calls it only on processors that have
// both.
#pragma GCC push_options
#pragma GCC target("avx2,bmi2")

#include "engine/MixKernel.inl"
#include "engine/MixLanesAvx2.h"

const MixFunctions mixAvx2 = mixFunctions<Avx2Lanes>();

#pragma GCC pop_options
