// Faults the dispatcher fuzzer found, each replayed as the host calls that showed it. Some only
// fail loudly in the sanitizer build (tests/sanitizers.sh), where undefined behaviour aborts.
#include <gtest/gtest.h>

#include <limits>

#include "tools/vsthost/VstPlugin.h"

namespace {

class FuzzRegression : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(module.entry()) << module.error();
        plugin = VstPlugin::create(module);
        ASSERT_TRUE(plugin);
    }

    VstModule module{HVT_MODULE_PATH};
    std::unique_ptr<VstPlugin> plugin;
};

// Found with seed 1: the rate choice of a NaN (or of a value no int holds) is INT32_MIN, and the
// panel subtracted the first choice from it to find a button, an int overflow.
TEST_F(FuzzRegression, thePanelOpensAndFollowsARateChoiceNoButtonShows)
{
    for (float value : {std::numeric_limits<float>::quiet_NaN(), 1e30f, -1e30f}) {
        plugin->setParameter(5, value);
        EXPECT_EQ(plugin->getParameter(5), -2147483648.0f);
        EXPECT_EQ(plugin->dispatch(effEditOpen), 1); // builds the panel from the effect
        plugin->setParameter(5, value);              // and updates it while it is open
        plugin->dispatch(effEditIdle);
        plugin->dispatch(effEditClose);
    }
    plugin->setParameter(5, 8.0f);
    EXPECT_EQ(plugin->getParameter(5), 8.0f);
}

} // namespace
