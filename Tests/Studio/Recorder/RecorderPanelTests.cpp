#include <Tavaro/Studio/Recorder/RecorderPanel.h>

#include <gtest/gtest.h>

using namespace tavaro;

TEST(RecorderPanel, whatIsWrongWithATakeIsSaidTheWorstFirst) {
    RecorderProgress take;
    auto const note = [&] { return noteOf(take).toStdString(); };
    take.roomSeconds = 3600;
    take.sounds = {{.role = StreamRole::microphone, .silentSeconds = 4.9}, {.role = StreamRole::systemSound}};
    EXPECT_EQ(note(), "");
    take.droppedFrames = 3;
    EXPECT_EQ(note(), "Pictures lost: 3");
    take.roomSeconds = 250;
    EXPECT_EQ(note(), "4:10 left on the disk");
    take.sounds[1].silentSeconds = 60;
    EXPECT_EQ(note(), "The system's sound is silent");
    take.sounds[0].isAway = true;
    EXPECT_EQ(note(), "The microphone is gone");
    take.isCameraAway = true;
    EXPECT_EQ(note(), "The camera gives no pictures");
    take.isScreenAway = true;
    EXPECT_EQ(note(), "The screen gives no pictures");
}
