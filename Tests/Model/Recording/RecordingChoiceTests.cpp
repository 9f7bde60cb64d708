#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Recording/RecordingChoice.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <gtest/gtest.h>

using namespace tavaro;

TEST(RecordingChoice, everySourceIsKeptAsTextAndNonsenseIsNone) {
    std::vector<CaptureSource> sources{DisplaySource{}, DisplaySource{"display-2"}, WindowSource{0x1a0005},
                                       ApplicationSource{"A: b;c"}};
    for (auto const shape : {AreaShape::free, AreaShape::wide, AreaShape::tall, AreaShape::square, AreaShape::portrait,
                             AreaShape::standard})
        sources.emplace_back(AreaSource{{10, 20, 640, 360}, "display-1", shape});
    for (auto const& source : sources) EXPECT_EQ(sourceOfText(sourceText(source)), source) << sourceText(source);
    for (auto const* const text : {"", "display", "screen:1", "window:", "window:x", "application:", "area:",
                                   "area:1,2,3;free;", "area:1,2,30,40;5:4;", "area:0,0,1,1;free;"})
        EXPECT_TRUE(!sourceOfText(text) || text == std::string("display")) << text;
}

TEST(RecordingChoice, aRecordingIsAsItWasChosenAndOfTheMainDisplayWhereThatCannotBeRead) {
    TemporaryFolder folder;
    Preferences preferences(folder.path() / "preferences.json");
    auto const plain = chosenRecording(preferences);
    EXPECT_EQ(plain.recorder.source, CaptureSource(DisplaySource{}));
    EXPECT_FALSE(plain.recorder.microphone || plain.recorder.systemSound || plain.recorder.camera);
    preferences.set(sourceChosen, "application:Player");
    preferences.set(systemAudioRecorded, true);
    preferences.set(systemAudioChosen, "Player");
    preferences.set(microphoneChosen, "mic"); // but not switched on
    preferences.set(countdownChosen, 4711);
    preferences.set(keysChosen, "shortcuts");
    auto const chosen = chosenRecording(preferences);
    EXPECT_EQ(chosen.recorder.source, CaptureSource(ApplicationSource{"Player"}));
    EXPECT_EQ(chosen.recorder.systemSound, SystemSoundSource{"Player"});
    EXPECT_FALSE(chosen.recorder.microphone);
    EXPECT_EQ(chosen.countdown, longestCountdown);
    EXPECT_EQ(plain.recorder.keys, KeyLogging::all);
    EXPECT_EQ(chosen.recorder.keys, KeyLogging::shortcuts);
    preferences.set(sourceChosen, "nonsense");
    EXPECT_EQ(chosenRecording(preferences).recorder.source, CaptureSource(DisplaySource{}));
    preferences.set(keysChosen, "nonsense");
    EXPECT_EQ(chosenRecording(preferences).recorder.keys, KeyLogging::none) << "rather than too many";
}
