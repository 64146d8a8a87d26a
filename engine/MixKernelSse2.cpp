#include "engine/MixKernel.inl"
#include "engine/MixLanesSse2.h"

const MixFunctions mixSse2 = mixFunctions<Sse2Lanes>();
