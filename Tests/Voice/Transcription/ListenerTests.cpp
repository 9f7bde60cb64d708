#include <TavaroVoice/Transcription/Private/ListenerProcess.h>

#include "SpokenTake.h"

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/ListenerTalk.h>
#include <TavaroVoice/Transcription/OnDeviceTranscriber.h>
#include <TavaroVoice/Transcription/TranscriptionEngines.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

MonoSound const second{std::vector<float>(speechRate, 0.1F), speechRate};

ListenerProcess listener(TestFolder const& folder, std::string const& text) {
    return ListenerProcess({.command = {folder.script("listener", text)},
                            .start = std::chrono::milliseconds(1500),
                            .perSecond = std::chrono::milliseconds(500)});
}

/// Processes of this one that are the embedded engine.
std::vector<pid_t> listenersNow() {
    std::vector<pid_t> found;
    for (auto const& task : fs::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (pid_t child = 0; children >> child;) {
            std::string name;
            std::ifstream(fs::path("/proc") / std::to_string(child) / "comm") >> name;
            if (name == "tavaro-listener") found.push_back(child);
        }
    }
    return found;
}

/// With the embedded engine, where the machine has its model.
class Narration : public testing::Test {
protected:
    void SetUp() override {
        engine_ = transcriptionEngines(EnginePlaces::usual())[1];
        if (!engine_.isReady) GTEST_SKIP() << engine_.advice;
    }
    Transcript transcribe(MonoSound const& sound, TranscriptionWatch const& watch = {}) const {
        writeWAV(folder_ / "take.wav", sound);
        return OnDeviceTranscriber(workOf(engine_, "en-US")).transcribe({{folder_ / "take.wav"}}, "en-US", watch);
    }

    TestFolder folder_;
    TranscriptionEngine engine_;
};

}

TEST(ListenerProcess, itIsStartedAgainAfterItBrokeDown) {
    TestFolder const folder;
    // Says that it is ready; dies over the first piece it ever hears.
    auto ear = listener(
        folder, R"(echo '{}'; read -r line
if [ -e ")" + (folder / "died").string() +
                    R"(" ]; then echo '{"words":[{"text":"again","start":0.1,"end":7,"confidence":2}]}'; read -r line
else : > ")" + (folder / "died").string() +
                    R"("; kill -SEGV $$; fi)");
    EXPECT_THROW(ear.hear(second, {}), RecogniserLost);
    auto const words = ear.hear(second, {});
    ASSERT_EQ(words.size(), 1U);
    EXPECT_EQ(words[0], (HeardWord{"again", 0.1, 1, 1})) << "inside of the piece";
}

TEST(ListenerProcess, hangingTalkingNonsenseAndFailingAreToldApart) {
    TestFolder const folder;
    EXPECT_THROW(listener(folder, "echo '{}'; read -r line; sleep 60").hear(second, {}), RecogniserLost);
    EXPECT_THROW(listener(folder, "echo '{}'; read -r line; echo 'words: none'; read -r line").hear(second, {}),
                 RecogniserLost);
    EXPECT_THROW(listener(folder, "exit 0").hear(second, {}), RecogniserLost);
    try {
        listener(folder, R"(echo '{"failure":"the model is damaged"}'; read -r line)").hear(second, {});
        FAIL() << "no failure";
    } catch (VoiceError const& error) {
        EXPECT_STREQ(error.what(), "Transcription failed: the model is damaged");
    }
}

TEST(ListenerProcess, whatTheEngineHearsInMusicIsNoWord) {
    EXPECT_TRUE(withoutGuesses({{"the", 3.3, 4.3, 1}, {"food", 6.3, 6.7, 0.07F}, {"oh", 8.6, 9.6, 0.97F}}).empty());
    // One that is not sure among sure ones is one that was hard to hear.
    std::vector<HeardWord> const spoken{{"press", 1, 1.3, 0.9F}, {"the", 1.3, 1.4, 0.1F}, {"key", 1.5, 1.8, 0.9F}};
    EXPECT_EQ(withoutGuesses(spoken), spoken);
}

TEST(ListenerProcess, soundArrivesAsItWasSent) {
    MonoSound const sound{{0, 0.5F, -0.5F, 1, -1, 2, NAN}, speechRate};
    auto const line = requestLine(sound);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    auto const base = line.substr(line.find(':') + 2);
    auto const data = Data::fromBase64(base.substr(0, base.find('"')));
    ASSERT_TRUE(data);
    EXPECT_EQ(samplesOf({*data}), (std::vector<std::int16_t>{0, 16384, -16384, 32767, -32767, 32767, 0}));
}

// Some seconds: two times forty of speech.
TEST_F(Narration, aVoiceIsUnderstoodAndAKilledEngineCostsNothing) {
    auto const spoken = spokenByFestival(narration, folder_);
    if (!spoken) GTEST_SKIP() << "festival with the voice slt is not installed";
    auto const late = joined({silent(3), *spoken});
    auto const transcript = transcribe(late);
    double const rate = wordErrorRate(narration, transcript.plainText());
    RecordProperty("wordErrorRate", std::to_string(rate));
    EXPECT_LE(rate, 0.12) << transcript.plainText();
    ASSERT_FALSE(transcript.words.empty());
    EXPECT_NEAR(transcript.words.front().start, 3.15, 0.2) << "silence before it counts";
    EXPECT_TRUE(std::ranges::is_sorted(transcript.words, {}, &TranscriptWord::start));
    EXPECT_LT(transcript.words.back().end, 3.05 + spoken->samples.size() / 48'000.0);

    std::jthread const killer([](std::stop_token const& stop) {
        for (int killed = 0; killed < 2 && !stop.stop_requested();) {
            std::this_thread::sleep_for(std::chrono::milliseconds(600));
            for (auto const process : listenersNow()) killed += ::kill(process, SIGKILL) == 0;
        }
    });
    EXPECT_EQ(transcribe(late).plainText(), transcript.plainText());
    EXPECT_TRUE(listenersNow().empty());
}

TEST_F(Narration, musicHasNoWords) {
    auto music = silent(12);
    for (std::size_t i = 0; i < music.samples.size(); ++i) {
        double const t = static_cast<double>(i) / 48'000;
        double const note = 220 + 55 * std::floor(std::fmod(t * 3, 8));
        double const beat = std::exp(-8 * std::fmod(t, 0.5)) * std::sin(2 * M_PI * 60 * t);
        music.samples[i] = static_cast<float>(0.2 * std::sin(2 * M_PI * t * note) + 0.3 * beat);
    }
    auto const transcript = transcribe(music);
    EXPECT_LE(transcript.words.size(), 1U) << transcript.plainText();
    EXPECT_FALSE(transcript.unrecognisedSounds.empty());
}

TEST_F(Narration, cancellingLeavesNoEngine) {
    std::stop_source stop;
    std::chrono::steady_clock::time_point asked;
    std::jthread const canceller([&] {
        while (listenersNow().empty()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        asked = std::chrono::steady_clock::now();
        stop.request_stop();
    });
    EXPECT_THROW(transcribe(humming(120), {.stop = stop.get_token()}), VoiceError);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::seconds(1));
    EXPECT_TRUE(listenersNow().empty());
}

}
