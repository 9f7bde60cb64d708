#include <TavaroCore/Recording/HealthRemarks.h>

#include <gmock/gmock.h>

namespace tavaro {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(HealthRemarks, nameLostSpotsUpToAFew) {
    auto const said = [](std::vector<double> spots) { return healthRemarks({.interruptedAt = std::move(spots)}); };
    EXPECT_THAT(said({}), IsEmpty());
    EXPECT_THAT(said({12.7}), ElementsAre("It was interrupted at 0:12."));
    EXPECT_THAT(said({12, 63, 3605}), ElementsAre("It was interrupted at 0:12, 1:03 and 1:00:05."));
    EXPECT_THAT(said({1, 2, 3, 4, 5, 6, 7}),
                ElementsAre("It was interrupted at 0:01, 0:02, 0:03, 0:04, 0:05 and at 2 more places."));
}

TEST(HealthRemarks, tellOfEveryTroubleThatTheSummaryLeavesOut) {
    CaptureHealth const all{.framesWritten = 190,
                            .droppedFrames = 8,
                            .writerRejectedFrames = 2,
                            .interruptions = 1,
                            .interruptedAt = {3},
                            .memoryPressureEvents = 2,
                            .captureLost = true,
                            .microphoneLost = true,
                            .cameraLost = true};
    EXPECT_EQ(all.summary(), "The capture stopped unexpectedly — the recording may be short.");
    EXPECT_THAT(healthRemarks(all),
                ElementsAre("The microphone was on but recorded nothing.", "The camera was on but recorded nothing.",
                            "The capture was interrupted 1 time and recovered.",
                            "10 frames were dropped (5.0%) — your Mac was busy.",
                            "The machine ran short of memory 2 times during the take.", "It was interrupted at 0:03."));
    EXPECT_THAT(healthRemarks({.framesWritten = 190, .droppedFrames = 10}), IsEmpty()) << "the summary tells it";
    EXPECT_THAT(healthRemarks({.framesWritten = 1000, .keyboardCaptured = true, .microphoneLost = false}), IsEmpty());
}

}
