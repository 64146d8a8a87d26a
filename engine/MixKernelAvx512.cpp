// Every header with inline functions comes before the target switch: an inline function compiled
// for a wider set here could be the copy the linker keeps for baseline callers.
#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "engine/MixKernel.h"
#include "engine/OscillatorSteps.h"

// Everything from here on may use AVX-512F, AVX2 and BMI2 (never FMA: products and sums stay
// separately rounded). Only mixAvx512 is reachable from outside, and the engine calls it only on
// processors that have all three.
#pragma GCC push_options
#pragma GCC target("avx512f,avx2,bmi2")
// GCC 12's AVX-512 intrinsics start their unmasked forms from a deliberately undefined register
// and then warn about it in every caller.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

#include "engine/MixKernel.inl"
#include "engine/MixLanesAvx512.h"

const MixFunctions mixAvx512 = mixFunctions<Avx512Lanes>();

#pragma GCC diagnostic pop
#pragma GCC pop_options
