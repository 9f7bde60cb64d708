#include "../TemporaryFolder.h"

#include <TavaroCapture/Events/Private/EventLog.h>
#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

namespace tavaro {

namespace {

constexpr double never = 1e6;

/// A log with the level of a microphone beside what the user does.
struct Heard {
    RecordingMetadata levels;

    RecordingMetadata since(EventLog const& log, EventCounts const& held, double t) const {
        auto result = log.since(held, t);
        result.micLevels = eventsAfter(levels, held).micLevels;
        return result;
    }
    EventCounts settled(EventLog const& log) const {
        auto result = log.settled();
        result.micLevels = levels.micLevels.size();
        return result;
    }
};

/// Some seconds of somebody at work.
void work(EventLog& log, std::mt19937& random, double from, double to) {
    for (double t = from; t < to; t += 1.0 / 60) {
        int const x = static_cast<int>(random() % 1000);
        log.notePointer(t, {x, x}, {x / 1000.0, 0.5}, CursorKind::iBeam);
        switch (random() % 50) {
        case 0: log.notePress(t, {MouseButton::left, {x, x}, {0.25, 0.5}, "Editor"}); break;
        case 1: log.noteRelease(t, MouseButton::left, {x, x}); break;
        case 2: log.noteKey(t, {.shift = true, .key = "k"}); break;
        case 3: log.noteFrontmostApplication(t, ApplicationIdentity{"id", std::string(1, 'A' + random() % 3)}); break;
        default: break;
        }
    }
}

}

TEST(MetadataCheckpoints, theSealedPartsAndTheRestAreTheWholeLogAtEveryCheckpoint) {
    TemporaryFolder folder;
    unsigned const seed = 7;
    std::mt19937 random(seed);
    EventLog log;
    Heard heard;
    double t = 0;
    MetadataCheckpoints checkpoints(folder.path(), never, [&](EventCounts const& after) {
        return MetadataCheckpoints::Snapshot{heard.since(log, after, t), heard.settled(log)};
    });
    for (int round = 0; round < 30; ++round) {
        double const length = static_cast<double>(random() % 40);
        work(log, random, t, t + length);
        t += length;
        heard.levels.micLevels.resize(static_cast<std::size_t>(t * 10), static_cast<float>(round));
        checkpoints.writeNow();
        ASSERT_EQ(MetadataCheckpoints::read(folder.path()), MetadataCheckpoints::SavedLog{heard.since(log, {}, t)})
            << "seed " << seed << ", round " << round;
        auto const size = std::filesystem::file_size(MetadataCheckpoints::path(folder.path()));
        ASSERT_LT(size, 1500000u) << "a checkpoint's cost must not grow with the take";
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "metadata-001.json"));
}

TEST(MetadataCheckpoints, whereThereIsNoPointerTheCostDoesNotGrowEither) {
    TemporaryFolder folder;
    EventLog const log;
    Heard heard;
    MetadataCheckpoints checkpoints(folder.path(), never, [&](EventCounts const& after) {
        return MetadataCheckpoints::Snapshot{heard.since(log, after, 0), heard.settled(log)};
    });
    for (int minute = 1; minute <= 60; ++minute) {
        heard.levels.micLevels.resize(static_cast<std::size_t>(minute) * 600, 0.123456f);
        checkpoints.writeNow();
        ASSERT_LT(std::filesystem::file_size(MetadataCheckpoints::path(folder.path())), 30000u) << minute;
    }
    EXPECT_EQ(MetadataCheckpoints::read(folder.path()), MetadataCheckpoints::SavedLog{heard.since(log, {}, 0)});
}

TEST(MetadataCheckpoints, damageGivesNoLogOrAShorterOneButNoFailure) {
    TemporaryFolder folder;
    EXPECT_EQ(MetadataCheckpoints::read(folder.path()), std::nullopt);
    auto const write = [&](std::string const& text) {
        std::ofstream(MetadataCheckpoints::path(folder.path()), std::ios::trunc) << text;
        return MetadataCheckpoints::read(folder.path());
    };
    MetadataCheckpoints::SavedLog const nothing{.isWhole = false};
    for (auto const* text : {"", "{", "[]", "{\"sealedParts\":\"x\"}", "{\"metadata\":{\"clicks\":7}}"})
        EXPECT_EQ(write(text), nothing) << text;
    auto const missingParts = write("{\"sealedParts\":1000000000000,\"metadata\":{\"scaleFactor\":2}}");
    ASSERT_TRUE(missingParts);
    EXPECT_EQ(missingParts->log.scaleFactor, 2);
    EXPECT_FALSE(missingParts->isWhole);
}

}
