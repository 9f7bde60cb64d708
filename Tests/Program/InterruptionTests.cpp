#include <Tavaro/Commands/Interruption.h>

#include <csignal>
#include <gtest/gtest.h>
#include <thread>

namespace tavaro {

TEST(Interruption, aSignalOnAnotherThreadIsSeen) {
    Interruption const interruption;
    EXPECT_FALSE(interruption.isRequested());
    std::jthread const other([] { std::raise(SIGTERM); });
    while (!interruption.isRequested()) std::this_thread::yield();
}

}
