#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <cmath>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <sched.h>
#include <stdexcept>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace tavaro {

TEST(SerialQueue, tasksRunInOrderAndTheLastOnesBeforeTheQueueEnds) {
    std::vector<int> order;
    {
        SerialQueue queue("test.order");
        for (int i = 0; i < 1000; ++i) queue.async([&order, i] { order.push_back(i); });
    }
    ASSERT_EQ(order.size(), 1000u);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(SerialQueue, aFailureReachesWhoWaitsAndStopsNobodyElse) {
    SerialQueue queue("test.failure");
    queue.async([] { throw std::runtime_error("for the log"); });
    EXPECT_THROW(queue.sync([] { throw std::out_of_range("for the caller"); }), std::out_of_range);
    bool isRun = false;
    queue.sync([&] { isRun = true; });
    EXPECT_TRUE(isRun);
}

TEST(SerialQueue, whoWaitsForAWhileOnlyLearnsWhetherAllHasRun) {
    std::promise<void> end;
    SerialQueue queue("test.settles");
    EXPECT_TRUE(queue.settles(std::chrono::seconds(10)));
    queue.async([isOver = end.get_future().share()] { isOver.wait(); });
    EXPECT_FALSE(queue.settles(std::chrono::milliseconds(1)));
    end.set_value();
    EXPECT_TRUE(queue.settles(std::chrono::seconds(10)));
}

TEST(SerialQueue, theUrgencyOfATasksThreadIsWhatItWasLastSetTo) {
    using Urgency = SerialQueue::Urgency;
    struct Turn {
        int policy = 0, niceness = 0;
        bool operator==(Turn const&) const = default;
    };
    auto const turn = [] { return Turn{sched_getscheduler(gettid()), getpriority(PRIO_PROCESS, gettid())}; };
    auto const usual = turn();
    SerialQueue queue("test.urgency", Urgency::raised);
    std::vector<Turn> turns;
    for (auto const urgency : {Urgency::raised, Urgency::normal, Urgency::prompt, Urgency::normal, Urgency::raised}) {
        queue.sync([&] {
            queue.setUrgency(urgency);
            turns.push_back(turn());
        });
    }
    if (turns[0] == usual) GTEST_SKIP() << "this user may not ask";
    EXPECT_EQ(turns[0].policy, usual.policy);
    EXPECT_LT(turns[0].niceness, usual.niceness);
    EXPECT_TRUE(turns[1] == usual && turns[3] == usual);
    EXPECT_EQ(turns[2].policy, SCHED_RR);
    EXPECT_EQ(turns[4], turns[0]);
    EXPECT_EQ(turn(), usual) << "nobody else's";
}

TEST(SerialQueue, whatHangsIsLeftToItselfAndWhatWaitsBehindItNeverRuns) {
    auto const runs = std::make_shared<std::atomic<int>>(0);
    std::promise<void> begun, hang, isOver;
    {
        SerialQueue queue("test.left");
        queue.async([&begun, hang = hang.get_future().share(), runs, &isOver] {
            begun.set_value();
            hang.wait();
            ++*runs;
            isOver.set_value();
        });
        queue.async([runs] { *runs += 100; });
        begun.get_future().wait();
        queue.leave();
    }
    EXPECT_EQ(*runs, 0) << "nobody waited";
    hang.set_value();
    isOver.get_future().wait();
    EXPECT_EQ(*runs, 1);
}

TEST(SerialQueue, theTimerKeepsToItsGridAndLeavesOutWhatASlowTickMissed) {
    double const start = mediaClockNow();
    double const interval = 0.002;
    std::vector<double> ticks;
    std::promise<void> done;
    SerialQueue queue("test.timer");
    queue.startTimer(start, interval, [&](double scheduled) {
        EXPECT_LE(scheduled, mediaClockNow()) << "never early";
        ticks.push_back(scheduled);
        if (ticks.size() == 3) { // a slow tick: busy for five intervals
            double const until = mediaClockNow() + 5 * interval;
            while (mediaClockNow() < until) {
            }
        }
        if (ticks.size() == 10) done.set_value();
    });
    queue.async([] {}); // tasks go on between ticks
    done.get_future().wait();
    queue.stopTimer();
    auto const count = ticks.size();
    queue.sync([] {});
    EXPECT_EQ(ticks.size(), count) << "stopped";
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        double const steps = (ticks[i] - start) / interval;
        EXPECT_NEAR(steps, std::round(steps), 1e-3) << "on the grid";
        EXPECT_GE(i > 0 ? ticks[i] - ticks[i - 1] : interval, 0.9 * interval);
    }
    EXPECT_GE(ticks[3] - ticks[2], 4.5 * interval) << "what was missed is not made up for";
}

}
