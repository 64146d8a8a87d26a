#include <gtest/gtest.h>

#include <thread>

#include "host/PanelUpdateFlag.h"

TEST(PanelUpdateFlag, ReadsRaisedOnlyOnTheThreadThatRaisedIt)
{
    PanelUpdateFlag flag;
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_TRUE(flag);
    bool seenElsewhere = true;
    std::thread other([&] { seenElsewhere = flag.load(); });
    other.join();
    EXPECT_FALSE(seenElsewhere); // automation on another thread is not taken for a panel write
    flag = false;
    EXPECT_FALSE(flag.load());
}
