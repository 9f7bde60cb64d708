#include "../ElevenLabs/TestService.h"
#include "ToneSpeaker.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroVoice/ElevenLabs/ElevenLabsSpeaker.h>
#include <TavaroVoice/Voiceover/LineAudio.h>
#include <TavaroVoice/Voiceover/SpokenPlan.h>
#include <TavaroVoice/Voiceover/StoredLine.h>

#include <gmock/gmock.h>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using testing::SizeIs;

VoiceSettings const onMachine{.voiceID = "system:tone"};
VoiceSettings const byService{.voiceID = "service-voice"};

class SpokenLinesTest : public testing::Test {
protected:
    SpokenLinesTest() { fs::create_directories(assets); }
    ~SpokenLinesTest() override { fs::remove_all(assets); }

    /// Says what needs it of the plan, and gives it to the document as a run of the program does.
    SpokenLines generate(std::stop_token const& stop = {}) {
        auto const lines = speakLines({.lines = linesToSpeak(*project.voiceover, project.voiceover->voice),
                                       .voice = project.voiceover->voice,
                                       .assets = assets,
                                       .speakers = studio.speakers()},
                                      stop);
        takeIn(project, lines);
        return lines;
    }

    void script(std::vector<std::string> const& texts, VoiceSettings const& voice = onMachine) {
        project.voiceover.emplace().voice = voice;
        for (auto const& text : texts) project.voiceover->segments.push_back({.text = text});
    }
    std::vector<VoiceoverSegment>& segments() { return project.voiceover->segments; }

    fs::path const assets = fs::path(testing::TempDir()) / ("tavaro-lines-" + std::to_string(getpid()));
    ToneStudio studio;
    DemoProject project;
};

TEST_F(SpokenLinesTest, areSaidOnceForEachTextVoiceAndSpeedWhateverBecomesOfTheDocument) {
    script({"One line.", "Another line.", "One line.", "   "});
    EXPECT_EQ(generate().newlySpoken, 2u);
    EXPECT_EQ(studio.timesAsked("One line."), 1) << "the same text twice has one sound";
    EXPECT_EQ(segments()[0].audioAsset, segments()[2].audioAsset);
    EXPECT_FALSE(segments()[3].audioAsset) << "blanks are not spoken";
    EXPECT_FALSE(needsGeneration(*project.voiceover));

    auto const before = project;
    segments()[1].text = "A changed line.";
    segments()[1].isDirty = true;
    EXPECT_EQ(generate().newlySpoken, 1u) << "one changed line costs one line";
    project = before; // undo
    EXPECT_FALSE(needsGeneration(*project.voiceover));
    project.voiceover->voice.speed = 1.5;
    EXPECT_TRUE(needsGeneration(*project.voiceover));
    EXPECT_EQ(generate().newlySpoken, 2u);
    EXPECT_LT(segments()[0].duration(), *before.voiceover->segments[0].audioDuration);
    project.voiceover->voice.speed = 1;
    EXPECT_EQ(generate().newlySpoken, 0u);
    EXPECT_EQ(project.voiceover, before.voiceover);

    for (auto& segment : segments()) segment = {.text = segment.text}; // a script pasted again
    EXPECT_EQ(generate().newlySpoken, 0u);
    project.voiceover->voice.stability = 0.9;
    EXPECT_FALSE(needsGeneration(*project.voiceover)) << "no voice of this machine hears that";
    project.voiceover->voice.voiceID = "service-voice";
    auto const other = lineAsset("One line.", project.voiceover->voice);
    project.voiceover->voice.stability = 0.5;
    EXPECT_NE(lineAsset("One line.", project.voiceover->voice), other);
}

TEST_F(SpokenLinesTest, leaveAloneWhatAUserRecorded) {
    script({"My own voice.", "A drafted line."});
    segments()[0] = {.text = "My own voice.", .audioAsset = "me.wav", .audioDuration = 3.0, .isDirty = false};
    generate();
    EXPECT_EQ(segments()[0].audioAsset, "me.wav");
    EXPECT_EQ(studio.count, 1);
}

TEST_F(SpokenLinesTest, aQuotaUsedUpInTheMiddleLosesNoSoundAndPaysNothingTwice) {
    constexpr int paid = 60; // of twice as many; a thousand of two thousand differ in nothing but the time
    std::vector<std::string> texts;
    for (int i = 0; i < 2 * paid; ++i) texts.push_back("Line " + std::to_string(i));
    script(texts, byService);
    studio.wordSeconds = 0.02;
    studio.silence = 0;
    studio.mishap = [&](auto const&, int before) {
        if (before >= paid) throw VoiceError(VoiceError::Kind::quotaUsedUp, "Your quota is used up.");
    };
    auto const first = generate();
    EXPECT_EQ(first.spoken.size(), std::size_t{paid});
    EXPECT_EQ(first.stopped, "Your quota is used up.");
    EXPECT_THAT(first.unspoken, SizeIs(testing::Le(4u))) << "those under way, each with its reason";
    EXPECT_EQ(first.spoken.size() + first.unspoken.size() + first.notBegun.size(), texts.size());

    studio.mishap = [](auto const&, int) {};
    studio.asked.clear();
    auto const second = generate();
    EXPECT_EQ(second.newlySpoken, texts.size() - paid);
    EXPECT_FALSE(needsGeneration(*project.voiceover));
    for (auto const& line : first.spoken) EXPECT_EQ(studio.timesAsked(line.text), 0) << line.text;
}

TEST_F(SpokenLinesTest, thatFailKeepTheReasonAndTheOthersGoOn) {
    script({"First.", "Second.", "Third."});
    studio.mishap = [](std::string const& text, int) {
        if (text == "Second.") throw VoiceError(VoiceError::Kind::failed, "The engine broke down.");
    };
    auto const lines = generate();
    ASSERT_THAT(lines.unspoken, SizeIs(1));
    EXPECT_EQ(lines.unspoken[0].id, segments()[1].id);
    EXPECT_EQ(lines.unspoken[0].sentence, "The engine broke down.");
    EXPECT_FALSE(lines.stopped);
    EXPECT_TRUE(segments()[0].audioAsset && segments()[2].audioAsset && !segments()[1].audioAsset);
    EXPECT_TRUE(segments()[1].isDirty);
}

TEST_F(SpokenLinesTest, giveUpOnAServiceThatFailsAgainAndAgainAndWhereNothingCanBeKept) {
    std::vector<std::string> texts;
    for (int i = 0; i < 50; ++i) texts.push_back("Line " + std::to_string(i));
    script(texts, byService);
    for (auto const kind : {VoiceError::Kind::notReached, VoiceError::Kind::service}) {
        studio.count = 0;
        studio.mishap = [kind](auto const&, int) { throw VoiceError(kind, "It went wrong."); };
        EXPECT_EQ(generate().stopped, "It went wrong.");
        EXPECT_LE(studio.count, 8);
    }
    studio.mishap = [](auto const&, int) {};
    studio.count = 0;
    studio.amplitude = 0;
    EXPECT_TRUE(generate().stopped) << "silence is paid for, too";
    EXPECT_LE(studio.count, 8);
    project.voiceover->voice = onMachine;
    EXPECT_FALSE(generate().stopped) << "this machine's costs nothing";
    project.voiceover->voice = byService;

    studio.count = 0;
    studio.amplitude = 0.2;
    fs::remove_all(assets);
    auto const lines = generate();
    EXPECT_TRUE(lines.stopped);
    EXPECT_LE(studio.count, 4) << "a line that cannot be kept is paid for in vain";
}

TEST_F(SpokenLinesTest, cancelledInTheMiddleKeepWhatCame) {
    std::vector<std::string> texts;
    for (int i = 0; i < 40; ++i) texts.push_back("Line " + std::to_string(i));
    script(texts);
    std::stop_source stop;
    studio.mishap = [&](auto const&, int before) {
        if (before == 10) stop.request_stop();
    };
    auto const lines = generate(stop.get_token());
    EXPECT_TRUE(lines.isCancelled);
    EXPECT_TRUE(lines.unspoken.empty()) << "who cancels needs no reasons";
    EXPECT_GE(lines.spoken.size(), 8u);
    EXPECT_EQ(lines.spoken.size() + lines.notBegun.size(), texts.size());
    EXPECT_EQ(speakingCost(linesToSpeak(*project.voiceover, onMachine), onMachine, assets).lines,
              lines.notBegun.size());
}

TEST_F(SpokenLinesTest, thatAServiceWasAskedForBeforeACancelAreKeptAndPaidForOnce) {
    std::vector<float> tone(24'000);
    for (std::size_t i = 0; i < tone.size(); ++i) tone[i] = 0.3F * std::sin(static_cast<float>(i) * 0.05F);
    writeFileAtomically(assets / "tone.wav", wavBytes({tone, 48'000}));
    TestService service({"--audio", (assets / "tone.wav").string()});
    auto const key = [] { return std::optional(Secret("sk_0123456789abcdef")); };
    SpeakingTask task{.voice = {.voiceID = "late-1"}, .assets = assets, .speakers = [&] {
                          return std::make_unique<ElevenLabsSpeaker>(
                              key, ElevenLabsClient::Settings{.host = service.host()});
                      }};
    for (int i = 0; i < 8; ++i) task.lines.push_back({UUID::random(), "Line " + std::to_string(i)});

    std::stop_source stop;
    std::size_t asked = 0;
    SpokenLines lines;
    {
        SerialQueue stopper("com.tavaro.test.stop");
        stopper.async([&] {
            for (int i = 0; i < 50 && asked == 0; ++i) asked = service.requests().size();
            stop.request_stop();
        });
        lines = speakLines(task, stop.get_token());
    }
    asked += service.requests().size();
    EXPECT_TRUE(lines.isCancelled);
    EXPECT_EQ(lines.spoken.size(), asked) << "what is asked for is paid for";
    EXPECT_EQ(speakLines(task, {}).newlySpoken, task.lines.size() - asked);
    EXPECT_EQ(asked + service.requests().size(), task.lines.size());
}

TEST_F(SpokenLinesTest, findNoSegmentWhoseTextChangedMeanwhile) {
    script({"First.", "Second."});
    auto const lines = speakLines({.lines = linesToSpeak(*project.voiceover, onMachine),
                                   .voice = onMachine,
                                   .assets = assets,
                                   .speakers = studio.speakers()},
                                  {});
    segments()[0].text = "Edited meanwhile.";
    segments().push_back({.text = "Added meanwhile."});
    takeIn(project, lines);
    EXPECT_TRUE(segments()[0].isDirty);
    EXPECT_FALSE(segments()[1].isDirty);
    EXPECT_EQ(linesToSpeak(*project.voiceover, onMachine).size(), 2u);
}

TEST_F(SpokenLinesTest, areTakenForWhatTheirSoundIsWhereTheWordsBesideItAreNoGood) {
    script({"Two words."});
    generate();
    auto const asset = *segments()[0].audioAsset;
    auto const whole = storedLine(assets, asset);
    ASSERT_TRUE(whole && whole->words.size() == 2);
    EXPECT_EQ(whole->words[0].text, "Two");
    for (auto const* const damage : {"", "{", "{\"duration\": -1}", "{\"duration\": 1e300}", "[]"}) {
        writeFileAtomically(assets / lineWordsAsset(asset), damage);
        auto const line = storedLine(assets, asset);
        ASSERT_TRUE(line) << damage;
        EXPECT_NEAR(line->duration, whole->duration, 0.001) << damage;
        EXPECT_TRUE(line->words.empty()) << damage;
    }
    auto const disordered = decodeStoredLine(
        R"({"duration": 2, "words": [{"text": "b", "start": 1, "end": 1.5}, {"text": "a", "start": 0.2, "end": 0.4}]})");
    EXPECT_TRUE(disordered && disordered->words.empty());
    fs::remove(assets / asset);
    EXPECT_FALSE(storedLine(assets, asset)) << "words alone are no sound";
}

}

}
