#include "../Voice/TestVoices.h"

#include <Tavaro/Studio/Timeline/TimelineSteps.h>

#include <gtest/gtest.h>

using namespace tavaro;
using namespace tavaro::timelineIntents;

TEST(VoiceLane, aLineIsPinnedToWhereTheHandPutsItAndTheDragIsOneStep) {
    auto document = narrated();
    auto& pushed = document.voiceover->segments[1];
    pushed.start = 6; // behind its anchor, by the line before it
    TestProject const project(document);
    TimelineSteps steps(*project.open());
    steps.take(EditBegan{"Move Voice-Over Line"});
    for (double const by : {0.5, 1.0, 1.5}) steps.take(MoveItems{{pushed.id}, by});
    steps.take(EditEnded{});
    auto const& moved = project.document().voiceover->segments[1];
    EXPECT_EQ(moved.start, 7.5);
    EXPECT_EQ(moved.anchor, 7.5);
    EXPECT_EQ(project->steps().size(), 1u);
}
