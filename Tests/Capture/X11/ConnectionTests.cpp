#include "../TestDisplay.h"

#include <TavaroCapture/X11/Connection.h>

#include <atomic>
#include <thread>
#include <vector>

namespace tavaro {

using ConnectionTest = DisplayTest;

/// What is shared by accident is seen by the thread sanitizer.
TEST_F(ConnectionTest, severalThreadsConnectAtTheSameTime) {
    constexpr int threads = 4, connections = 25;
    std::atomic<int> alive = 0;
    std::vector<std::jthread> connecting;
    for (int i = 0; i < threads; ++i) {
        connecting.emplace_back([&] {
            for (int j = 0; j < connections; ++j) alive += x11::Connection(display->name()).isAlive();
        });
    }
    connecting.clear();
    EXPECT_EQ(alive, threads * connections);
}

}
