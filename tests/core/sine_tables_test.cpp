// The oscillator tables, which a host cannot read: golden values from their definition.
#include <gtest/gtest.h>

#include "effect/SineTables.h"

using namespace sine_tables;

TEST(SineTables, CheckValues)
{
    const float* tremolo = tremoloTable();
    const float* panner = pannerTable();
    EXPECT_EQ(tremolo[0], 0.0f);
    EXPECT_EQ(tremolo[9000], 1.0f);
    EXPECT_EQ(tremolo[8999], 1.0f); // the accumulated angle passes 90 degrees early
    EXPECT_LT(tremolo[8998], 1.0f);
    EXPECT_NEAR(tremolo[18001], 0.000168312f, 1e-9f);
    EXPECT_LT(panner[18002], 0.0f);
    EXPECT_GT(panner[18001], 0.0f);
    EXPECT_EQ(panner[27004], -1.0f);
    EXPECT_LT(panner[35995], 0.0f);
    EXPECT_GT(panner[35996], 0.0f);
    EXPECT_NEAR(panner[36003], 0.00122346f, 1e-8f);
    for (uint32_t k = 0; k < kTremoloLength; ++k)
        ASSERT_GE(tremolo[k], 0.0f) << k;
}

TEST(SineTables, AreBuiltOncePerProcessAndShared)
{
    EXPECT_EQ(tremoloTable(), tremoloTable());
    EXPECT_EQ(pannerTable(), pannerTable());
}
