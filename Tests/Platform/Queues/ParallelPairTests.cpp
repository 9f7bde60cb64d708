#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroPlatform/Queues/ParallelPair.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>

using namespace tavaro;

namespace {

/// What a pair throws, and whether both its tasks had ended by then.
struct Outcome {
    std::string thrown;
    bool haveBothEnded = false;
};

Outcome outcome(TaskPairRunner run, char const* first, char const* second) {
    std::atomic<int> ended = 0;
    auto const task = [&ended](char const* failure) {
        ++ended;
        if (*failure) throw std::runtime_error(failure);
    };
    try {
        run([&] { task(first); }, [&] { task(second); });
    } catch (std::runtime_error const& error) {
        return {error.what(), ended == 2};
    }
    return {"", ended == 2};
}

/// A log long enough to be read in two parts.
DemoProject longTake() {
    DemoProject project;
    auto& samples = project.metadata.edit().cursorSamples;
    for (int i = 0; i < 40'000; ++i) samples.push_back({i / 60.0, {i / 40'000.0, 0.25}, CursorKind::iBeam});
    return project;
}

class InParallel : public testing::Test {
    void SetUp() override { setTaskPairRunner(runInParallel); }
};

}

TEST(ParallelPair, endsBothTasksAndThrowsTheFirstFailure) {
    EXPECT_EQ(outcome(runInParallel, "", "").thrown, "");
    EXPECT_EQ(outcome(runInParallel, "", "second").thrown, "second");
    EXPECT_EQ(outcome(runInParallel, "first", "second").thrown, "first");
    EXPECT_TRUE(outcome(runInParallel, "", "").haveBothEnded);
}

TEST_F(InParallel, aLongTakeIsReadAsItWasWritten) {
    auto const take = longTake();
    EXPECT_EQ(decodeProject(encodeProject(take)), take);
}

TEST_F(InParallel, damageInEitherHalfIsNamedByItsPlace) {
    auto const text = encodeProject(longTake());
    for (auto const start : {text.size() / 4, text.size() * 3 / 4}) {
        auto damaged = text;
        auto const at = damaged.find("\"iBeam\"", start);
        damaged.replace(at, 7, "\"cat\"");
        try {
            decodeProject(damaged);
            ADD_FAILURE() << "read";
        } catch (JSONError const& error) {
            EXPECT_NE(std::string(error.what()).find("'cat'"), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find("cursorSamples["), std::string::npos) << error.what();
        }
    }
}
