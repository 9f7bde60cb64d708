#include <TavaroPlatform/Queues/MainQueue.h>

#include <TavaroPlatform/Queues/SerialQueue.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <utility>
#include <vector>

using namespace tavaro;

TEST(MainQueue, runsTheTasksOfAllThreadsHereInTheirOrder) {
    MainQueue queue;
    std::vector<int> seen[2];
    {
        SerialQueue first("com.tavaro.test.first"), second("com.tavaro.test.second");
        int which = 0;
        for (auto* thread : {&first, &second}) {
            thread->async([&, which = which++] {
                EXPECT_FALSE(queue.isCurrent());
                for (int i = 0; i < 1000; ++i) queue.async([&, which, i] { seen[which].push_back(i); });
            });
        }
        queue.runUntil([&] { return seen[0].size() + seen[1].size() == 2000; });
    }
    EXPECT_TRUE(queue.isCurrent());
    for (auto const& each : seen) EXPECT_TRUE(std::is_sorted(each.begin(), each.end()));
}

TEST(MainQueue, aTaskThatFailsOrRunsTheQueueItselfKeepsNobodyFromRunning) {
    MainQueue queue;
    std::vector<int> order;
    queue.async([] { throw std::runtime_error("no"); });
    queue.async([&] {
        queue.runUntil([&] { return order.size() == 1; }); // a wait inside of a task
        order.push_back(2);
    });
    queue.async([&] { order.push_back(1); });
    queue.runUntil([&] { return order.size() == 2; });
    EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST(MainQueue, anotherLoopIsWokenOnceForWhatItFindsPending) {
    MainQueue queue;
    std::atomic<int> wakes = 0;
    int ran = 0;
    queue.onPending([&] { ++wakes; });
    for (int round = 1; round <= 3; ++round) {
        for (int i = 0; i < 5; ++i) queue.async([&] { ++ran; });
        EXPECT_EQ(wakes, round);
        queue.runPending();
        EXPECT_EQ(ran, 5 * round);
    }
    queue.async([&] { queue.async([&] { ++ran; }); }); // what comes meanwhile has its turn next time
    queue.runPending();
    EXPECT_EQ(ran, 15);
}

TEST(MainQueue, anotherLoopIsWokenForWhatComesWhileItRunsAndForWhatWasThereBefore) {
    MainQueue queue;
    int wakes = 0, ran = 0;
    queue.async([&] { ++ran; });
    queue.onPending([&] { ++wakes; });
    EXPECT_EQ(std::exchange(wakes, 0), 1);
    queue.runPending();
    // The second task comes to an empty queue, the third one to the second.
    queue.async([&] { queue.async([&] { ++ran; }); });
    queue.async([&] { queue.async([&] { ++ran; }); });
    while (wakes > 0) {
        --wakes;
        queue.runPending();
    }
    EXPECT_EQ(ran, 3) << "a task that nobody was woken for waits for ever";
}
