#include <TavaroCapture/Recorder/Private/DiskRoom.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

constexpr std::uint64_t megabyte = 1 << 20;

}

TEST(DiskRoom, whatWasWrittenIsNeededOnceMore) {
    DiskRoom room;
    EXPECT_FALSE(room.seconds());
    // A megabyte a second on a disk of a gigabyte that others fill as well: half of what is free is for saving.
    for (std::uint64_t second = 0; second <= 100; ++second)
        room.note({static_cast<double>(second), second * megabyte, (1008 - 2 * second) * megabyte, 1024 * megabyte});
    EXPECT_NEAR(room.seconds().value_or(0), (808 - 100 - 8) / 2.0, 1);
    EXPECT_FALSE(room.isUsedUp());
    room.note({101, 101 * megabyte, 114 * megabyte, 1024 * megabyte});
    EXPECT_TRUE(room.isUsedUp()) << "two and a half seconds before the last that could be saved";
}

TEST(DiskRoom, onTheDiskThatATakeIsMovedToItIsNeededOnce) {
    DiskRoom room(DiskRoom::Use::keeping);
    for (std::uint64_t second = 0; second <= 100; ++second)
        room.note({static_cast<double>(second), second * megabyte, 208 * megabyte, 1024 * megabyte});
    EXPECT_NEAR(room.seconds().value_or(0), 100, 1);
    EXPECT_FALSE(room.isUsedUp());
    room.note({101, 198 * megabyte, 208 * megabyte, 1024 * megabyte});
    EXPECT_TRUE(room.isUsedUp());
}

TEST(DiskRoom, aScreenThatNeverChangesAndATakeThatIsPausedHaveRoomEnough) {
    DiskRoom room;
    for (int i = 0; i < 3; ++i) room.note({10, megabyte, 100 * megabyte, 1024 * megabyte});
    EXPECT_FALSE(room.seconds()) << "nobody knows how fast it will grow";
    EXPECT_FALSE(room.isUsedUp());
    room.note({10, megabyte, 5 * megabyte, 1024 * megabyte});
    EXPECT_TRUE(room.isUsedUp());
}

}
