#include "effect/MixKernel.inl"
#include "effect/MixLanesSse2.h"

const MixFunctions mixSse2 = mixFunctions<Sse2Lanes>();
