#include <TavaroCore/Recording/RecordingMetadata.h>

#include <gtest/gtest.h>

using namespace tavaro;

TEST(CaptureHealth, zeroCountersAreClean) {
    CaptureHealth const health;
    EXPECT_TRUE(health.isClean());
    EXPECT_FALSE(health.warning());
    EXPECT_EQ(health.summary(), "0 frames, none dropped");
}

TEST(CaptureHealth, halfAPercentOfLostFramesIsWorthAWarning) {
    CaptureHealth health{.framesWritten = 199, .droppedFrames = 1};
    EXPECT_FALSE(health.isClean());
    EXPECT_EQ(health.warning(), "1 frames were dropped (0.5%) — your Mac was busy.");
    EXPECT_EQ(health.summary(), health.warning());
    health.droppedFrames = 0;
    health.writerRejectedFrames = 3;
    EXPECT_EQ(health.warning(), "3 frames were dropped (1.5%) — your Mac was busy.");
    health = {.framesWritten = 999, .droppedFrames = 1};
    EXPECT_TRUE(health.isClean());
    EXPECT_EQ(health.summary(), "999 frames, none dropped");
}

TEST(CaptureHealth, theWorstThingIsSaidFirst) {
    CaptureHealth health{.framesWritten = 1, .droppedFrames = 9, .interruptions = 2};
    EXPECT_EQ(health.warning(), "The capture was interrupted 2 times and recovered.");
    health.interruptions = 1;
    EXPECT_EQ(health.warning(), "The capture was interrupted 1 time and recovered.");
    health.cameraLost = true;
    EXPECT_EQ(health.warning(), "The camera was on but recorded nothing.");
    health.microphoneLost = true;
    EXPECT_EQ(health.warning(), "The microphone was on but recorded nothing.");
    health.captureLost = true;
    EXPECT_EQ(health.warning(), "The capture stopped unexpectedly — the recording may be short.");
    EXPECT_FALSE(health.isClean());
}

TEST(CaptureHealth, onlyTrueIsALoss) {
    CaptureHealth health{.framesWritten = 10};
    health.microphoneLost = false;
    health.cameraLost = false;
    EXPECT_TRUE(health.isClean());
    health.microphoneLost = true;
    EXPECT_FALSE(health.isClean());
}

TEST(RecordingMetadata, thePointerMovesStraightBetweenSamplesAndHoldsBeyondThem) {
    RecordingMetadata recording;
    EXPECT_FALSE(recording.cursorPosition(1));
    recording.cursorSamples = {{1, {0.2, 0.4}}};
    for (double t : {0.0, 1.0, 7.0}) EXPECT_EQ(recording.cursorPosition(t), (UnitPoint2{0.2, 0.4}));
    recording.cursorSamples.push_back({3, {0.6, 0.8}});
    recording.cursorSamples.push_back({3, {0.9, 0.9}});
    recording.cursorSamples.push_back({4, {1, 1}});
    EXPECT_NEAR(recording.cursorPosition(2)->distance({0.4, 0.6}), 0, 1e-12);
    EXPECT_EQ(recording.cursorPosition(3), (UnitPoint2{0.9, 0.9}));
    EXPECT_EQ(recording.cursorPosition(99), (UnitPoint2{1, 1}));
}

TEST(RecordingMetadata, theLastSpanListedWinsWhereSpansOverlap) {
    RecordingMetadata recording;
    recording.appSpans = {{0, 10, "a", "Editor"}, {2, 2, "b", "Dialog"}};
    EXPECT_EQ(recording.application(1)->name, "Editor");
    EXPECT_EQ(recording.application(2)->name, "Dialog");
    EXPECT_EQ(recording.application(4)->name, "Editor");
    EXPECT_EQ(recording.application(10), nullptr);
}
