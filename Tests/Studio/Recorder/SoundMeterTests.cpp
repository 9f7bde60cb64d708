#include <Tavaro/Studio/Recorder/SoundMeter.h>

#include <gtest/gtest.h>

using namespace tavaro;

TEST(SoundMeter, thePeakStaysForAMomentAndNothingIsToldWhereNothingChanges) {
    SoundMeter meter;
    int changes = 0;
    QObject::connect(&meter, &SoundMeter::changed, [&] { ++changes; });
    meter.show({.level = 1}, 10);
    EXPECT_EQ(meter.level(), 1);
    meter.show({.level = 0.001f}, 10.5);
    EXPECT_EQ(meter.level(), 0);
    EXPECT_EQ(meter.peak(), 1);
    meter.show({.level = 0.001f}, 11.5);
    EXPECT_EQ(meter.peak(), 0);
    int const before = changes;
    for (int i = 0; i < 20; ++i) meter.show({.level = 0.001f}, 12 + i);
    EXPECT_EQ(changes, before) << "a resting meter draws nothing";
}

TEST(SoundMeter, whatDoesNotSoundIsToldAfterFiveSecondsWhereItShouldSound) {
    SoundMeter meter;
    auto const warningOf = [&](SoundState const& state) {
        meter.show(state, 1);
        return !meter.warning().isEmpty();
    };
    EXPECT_FALSE(warningOf({.role = StreamRole::microphone, .silentSeconds = 4.9}));
    EXPECT_TRUE(warningOf({.role = StreamRole::microphone, .silentSeconds = 5}));
    EXPECT_FALSE(warningOf({.role = StreamRole::systemSound, .silentSeconds = 60})) << "nothing may be playing";
    EXPECT_TRUE(warningOf({.role = StreamRole::systemSound, .silentSeconds = 5, .awaited = "Player"}));
    EXPECT_TRUE(meter.warning().contains("Player"));
    EXPECT_TRUE(warningOf({.role = StreamRole::systemSound, .isAway = true}));
    meter.clear();
    EXPECT_TRUE(meter.warning().isEmpty());
    EXPECT_FALSE(meter.isListening());
}
