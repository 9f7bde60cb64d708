#include <Tavaro/Model/Jobs/Job.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace tavaro;

namespace {

using Counted = Job<int, int>;
using Reporter = JobReporter<int>;

/// Work that goes on until it is cancelled.
int endless(Reporter& reporter) {
    for (int i = 0;; ++i) {
        reporter.progress(i);
        reporter.stopIfCancelled("It was cancelled.");
        std::this_thread::yield();
    }
}

std::string failureOf(Counted& job) {
    try {
        job.wait();
        return "";
    } catch (Error const& error) {
        return error.what();
    }
}

}

TEST(Job, deliversProgressAndRemarksInTheirOrderHereAndTheEndLast) {
    MainQueue queue;
    Counted job(queue, "com.tavaro.test.job", [](Reporter& reporter) {
        for (int i = 0; i < 5000; ++i) {
            reporter.progress(i);
            if (i % 1000 == 0) reporter.remark(std::to_string(i));
        }
        return 7;
    });
    std::vector<int> progress;
    std::vector<std::string> remarks;
    bool isFinished = false;
    job.onProgress([&](int value) {
        EXPECT_TRUE(queue.isCurrent() && !isFinished);
        progress.push_back(value);
    });
    job.onRemark([&](std::string const& remark) {
        EXPECT_FALSE(isFinished);
        remarks.push_back(remark);
    });
    job.onFinished([&] {
        isFinished = true;
        EXPECT_EQ(job.result(), 7);
    });
    job.start();
    EXPECT_EQ(job.wait(), 7);
    EXPECT_TRUE(isFinished && std::is_sorted(progress.begin(), progress.end()));
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.back(), 4999); // the newest is never the one left out
    EXPECT_EQ(remarks, (std::vector<std::string>{"0", "1000", "2000", "3000", "4000"}));
}

TEST(Job, tellsTheLastOfEachStageHoweverFastTheNextComes) {
    struct Step {
        int stage, done;
    };
    MainQueue queue;
    std::vector<int> lasts(3, -1);
    Job<int, Step> job(queue, "com.tavaro.test.job", [](JobReporter<Step>& reporter) {
        for (int i = 0; i < 300; ++i) reporter.progress({i / 100, i % 100});
        return 0;
    });
    job.onProgress([&](Step step) { lasts[static_cast<std::size_t>(step.stage)] = step.done; });
    job.start();
    job.wait();
    EXPECT_EQ(lasts, (std::vector{99, 99, 99}));
}

TEST(Job, everyFailureIsAnErrorWithASentence) {
    struct Case {
        std::function<int(Reporter&)> work;
        std::string sentence;
    };
    for (auto const& [work, sentence] : std::vector<Case>{
             {[](Reporter&) -> int { throw Error("The disk is full."); }, "The disk is full."},
             {[](Reporter&) -> int { throw std::bad_alloc(); }, "There is not enough memory for this."},
             {[](Reporter&) -> int { throw std::runtime_error("odd"); }, "odd"},
         }) {
        MainQueue queue;
        Counted job(queue, "com.tavaro.test.job", work);
        job.start();
        EXPECT_EQ(failureOf(job), sentence);
        EXPECT_THROW(job.result(), Error); // again and again
    }
}

TEST(Job, endsEarlyWhenItIsCancelledBeforeInTheMiddleOrFromItsOwnProgress) {
    for (int const after : {-1, 0, 3}) {
        MainQueue queue;
        Counted job(queue, "com.tavaro.test.job", endless);
        int seen = 0;
        job.onProgress([&](int) {
            if (++seen > after) job.cancel();
        });
        if (after < 0) job.cancel();
        job.start();
        EXPECT_EQ(failureOf(job), "It was cancelled.");
    }
}

TEST(Job, workThatWaitsForSomethingIsStoppedByItsAction) {
    for (bool const isEarly : {true, false}) {
        MainQueue queue;
        Counted job(queue, "com.tavaro.test.job", [](Reporter& reporter) {
            std::mutex mutex;
            std::condition_variable stopped;
            bool isStopped = false;
            JobControl::CancelAction const action(reporter, [&] {
                std::lock_guard const lock(mutex);
                isStopped = true;
                stopped.notify_all();
            });
            reporter.progress(1);
            std::unique_lock lock(mutex);
            stopped.wait(lock, [&] { return isStopped; });
            return 1;
        });
        job.onProgress([&](int) { job.cancel(); });
        if (isEarly) job.cancel();
        job.start();
        EXPECT_EQ(job.wait(), 1);
    }
}

TEST(Job, thatGoesAwayWhileItRunsIsCancelledWaitedForAndSilent) {
    MainQueue queue;
    std::atomic<bool> hasEnded = false;
    int delivered = 0;
    {
        Counted job(queue, "com.tavaro.test.job", [&](Reporter& reporter) {
            struct AtEnd {
                std::atomic<bool>& flag;
                ~AtEnd() { flag = true; }
            } const atEnd{hasEnded};
            return endless(reporter);
        });
        job.onProgress([&](int) { ++delivered; });
        job.onFinished([&] { FAIL() << "told of its end after it went away"; });
        job.start();
        queue.runUntil([&] { return delivered > 0; });
    }
    EXPECT_TRUE(hasEnded);
    int const before = delivered;
    queue.runPending();
    EXPECT_EQ(delivered, before);
}

TEST(Job, mayGoAwayInItsOwnLastCall) {
    MainQueue queue;
    auto job = std::make_unique<Counted>(queue, "com.tavaro.test.job", [](Reporter&) { return 1; });
    job->onFinished([&] { job.reset(); });
    job->start();
    queue.runUntil([&] { return !job; });
    EXPECT_FALSE(job);
}
