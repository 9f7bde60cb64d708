#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroCore/Direction/Private/SilenceDetector.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace tavaro;

namespace {

constexpr SilenceDetector detector{.threshold = 0.018f, .minimumDuration = 1.2, .padding = 0.25, .bucketSeconds = 0.1};

std::vector<TimeRange> spansOf(RecordingMetadata const& recording, double duration) {
    std::vector<TimeRange> ranges;
    for (auto const& span : detector.detect(recording, duration)) {
        EXPECT_TRUE(span.isRemoved);
        ranges.push_back(span.range());
    }
    return ranges;
}

std::vector<TimeRange> near(std::vector<TimeRange> ranges) { // microseconds, so that rounding does not count
    for (auto& range : ranges) {
        range = {std::round(range.start * 1e6) / 1e6, std::round(range.duration * 1e6) / 1e6};
    }
    return ranges;
}

}

TEST(SilenceDetector, quietWithoutActivityIsOneSpanWithHalfAPaddingAtEachEnd) {
    RecordingMetadata recording;
    recording.micLevels.assign(100, 0.0f);
    EXPECT_EQ(near(spansOf(recording, 10)), (std::vector<TimeRange>{{0.125, 9.75}}));
    EXPECT_EQ(near(spansOf({}, 10)), (std::vector<TimeRange>{{0.125, 9.75}})) << "no microphone is quiet throughout";
    EXPECT_EQ(near(spansOf({}, 1.2)), (std::vector<TimeRange>{{0.125, 0.95}})) << "exactly long enough";
    EXPECT_TRUE(spansOf({}, 1.19).empty());
    EXPECT_TRUE(spansOf(recording, 0).empty());
    EXPECT_TRUE(spansOf(recording, -1).empty());
    recording.micLevels.assign(100, 0.018f);
    EXPECT_TRUE(spansOf(recording, 10).empty()) << "a level at the threshold is not quiet";
}

TEST(SilenceDetector, activitySplitsAQuietRangeAndKeepsMoreRoomBeforeIt) {
    RecordingMetadata recording;
    recording.clicks = {{.t = 4}};
    EXPECT_EQ(near(spansOf(recording, 10)), (std::vector<TimeRange>{{0.125, 3.5}, {4.375, 5.5}}));
    recording.clicks = {{.t = 0}, {.t = 10}};
    EXPECT_EQ(near(spansOf(recording, 10)), (std::vector<TimeRange>{{0.125, 9.75}})) << "at the very ends: no split";
    recording.clicks = {{.t = 1.3}, {.t = 2.6}, {.t = 3.9}};
    EXPECT_EQ(near(spansOf(recording, 4)), (std::vector<TimeRange>{})) << "each gap is shorter than it looks";
}

TEST(SilenceDetector, quietRangesFollowTheLevels) {
    std::vector<float> const levels{0.0f, 0.5f, 0.0f, 0.01f, 0.5f, 0.5f, 0.0f, 0.0f};
    EXPECT_EQ(detector.quietRanges(levels, 4), (std::vector<TimeRange>{{0, 0.5}, {1, 1}, {3, 1}}));
    EXPECT_TRUE(detector.quietRanges({}, 4).empty());
}

TEST(SilenceDetector, aDriftingPointerIsActiveOnceItHasGoneFarEnough) {
    RecordingMetadata recording;
    for (int i = 0; i < 10; ++i) recording.cursorSamples.push_back({i * 0.1, {0.5 + i * 0.005, 0.5}});
    auto const times = SilenceDetector::activityTimes(recording, 0.012);
    ASSERT_EQ(times.size(), 3u); // every third sample is 0.015 from the last anchor
    EXPECT_NEAR(times[0], 0.3, 1e-12);
    EXPECT_NEAR(times[2], 0.9, 1e-12);
    recording.keystrokes = {{.t = 0.35}};
    recording.clicks = {{.t = 0.25}};
    auto const all = SilenceDetector::activityTimes(recording, 0.012);
    EXPECT_EQ(all.size(), 5u);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
}

TEST(SilenceDetector, speechIsCountedInBuckets) {
    std::vector<float> const levels{0.0f, 0.018f, 0.5f, 0.0f};
    EXPECT_TRUE(detector.containsSpeech(levels, 0.2));
    EXPECT_FALSE(detector.containsSpeech(levels, 0.21));
    EXPECT_TRUE(detector.containsSpeech({}, 0));
    EXPECT_FALSE(detector.containsSpeech({}, 0.01));
}

TEST(SilenceDetector, spansAscendAndHoldNeitherSpeechNorActivity) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        double const duration = 60 * unit(random);
        RecordingMetadata recording;
        float level = 0;
        for (int i = 0; i < duration * 10; ++i) {
            if (unit(random) < 0.04) level = level > 0 ? 0.0f : 0.1f;
            recording.micLevels.push_back(level);
        }
        for (int i = 0; i < 12; ++i) recording.clicks.push_back({.t = unit(random) * duration});
        double before = 0;
        for (auto const& span : spansOf(recording, duration)) {
            EXPECT_GE(span.start, before) << "seed " << seed;
            EXPECT_LE(span.end(), duration) << "seed " << seed;
            EXPECT_GE(span.duration, 1.2 - 0.25 - 1e-9) << "seed " << seed;
            for (auto const& click : recording.clicks) EXPECT_FALSE(span.contains(click.t)) << "seed " << seed;
            double const bucket = duration / static_cast<double>(recording.micLevels.size());
            for (std::size_t i = 0; i < recording.micLevels.size(); ++i) {
                TimeRange const heard{static_cast<double>(i) * bucket, bucket};
                EXPECT_FALSE(recording.micLevels[i] > 0 && span.intersects(heard)) << "seed " << seed;
            }
            before = span.end();
        }
    }
}
