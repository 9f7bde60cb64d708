#include <TavaroVoice/Transcription/OnDeviceTranscriber.h>

#include "SpokenTake.h"

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/Private/Recogniser.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <thread>

namespace tavaro {

namespace {

using Hear = std::function<std::vector<HeardWord>(MonoSound const&, std::stop_token const&)>;

class ScriptedRecogniser final : public Recogniser {
public:
    explicit ScriptedRecogniser(Hear hear) : hear_(std::move(hear)) {}
    std::vector<HeardWord> hear(MonoSound const& piece, std::stop_token const& stop) override {
        return hear_(piece, stop);
    }

private:
    Hear const hear_;
};

EngineWork workOf(Hear const& hear, int atOnce = 2) {
    return {.atOnce = atOnce, .pieceSeconds = 10, .makeRecogniser = [hear] {
                return std::make_unique<ScriptedRecogniser>(hear);
            }};
}

/// Hears one word in the middle of each piece, and takes the longer the earlier it is asked.
Hear slowAtFirst() {
    auto const asked = std::make_shared<std::atomic<int>>(0);
    return [asked](MonoSound const& piece, std::stop_token const&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::max(40 - 10 * (*asked)++, 0)));
        double const middle = static_cast<double>(piece.samples.size()) / speechRate / 2;
        return std::vector<HeardWord>{{"hum", middle - 0.2, middle + 0.2, 0.9F}};
    };
}

std::string failureOf(OnDeviceTranscriber const& transcriber, std::vector<SpokenSound> const& sounds,
                      TranscriptionWatch const& watch = {}) {
    try {
        transcriber.transcribe(sounds, "en-US", watch);
        return "none";
    } catch (VoiceError const& error) {
        return error.what();
    }
}

struct Hummed {
    explicit Hummed(double seconds = 65) { writeWAV(file, humming(seconds)); }
    TestFolder folder;
    std::filesystem::path file = folder / "hum.wav";
};

}

TEST(OnDeviceTranscriber, wordsComeInTheOrderOfTheSoundThoughPiecesAreHeardAtOnce) {
    Hummed const hummed;
    std::vector<TranscriptWord> told;
    double heard = 0, total = 0;
    auto const transcript = OnDeviceTranscriber(workOf(slowAtFirst(), 3))
                                .transcribe({{hummed.file, 100}}, "en-US", {.progress = [&](auto const& state) {
                                                told.insert(told.end(), state.words.begin(), state.words.end());
                                                EXPECT_GE(state.seconds, heard);
                                                heard = state.seconds;
                                                total = state.total;
                                            }});
    EXPECT_GE(told.size(), 6U);
    EXPECT_TRUE(std::ranges::is_sorted(told, {}, &TranscriptWord::start));
    EXPECT_EQ(told, transcript.words);
    EXPECT_GT(transcript.words.front().start, 100);
    EXPECT_NEAR(heard, 65, 0.01);
    EXPECT_NEAR(total, 65, 0.01);
    EXPECT_EQ(transcript.localeIdentifier, "en-US");
    EXPECT_FALSE(transcript.unrecognisedSounds.empty()) << "most of the hum is no word";
}

TEST(OnDeviceTranscriber, aPieceThatBreaksTheEngineTwiceIsLeftOutWithARemark) {
    Hummed const hummed;
    std::atomic<int> asked = 0;
    std::vector<std::string> remarks;
    auto const words = slowAtFirst();
    auto const work = workOf(
        [&](MonoSound const& piece, std::stop_token const& stop) -> std::vector<HeardWord> {
            auto const number = asked++;
            if (number == 1 || number == 3 || number == 4)
                throw RecogniserLost("it broke down"); // the last two: one piece
            return words(piece, stop);
        },
        1);
    auto const whole = OnDeviceTranscriber(workOf(slowAtFirst())).transcribe({{hummed.file}}, "en-US");
    auto const transcript = OnDeviceTranscriber(work).transcribe(
        {{hummed.file}}, "en-US", {.remark = [&](auto const& sentence) { remarks.push_back(sentence); }});
    EXPECT_EQ(transcript.words.size() + 1, whole.words.size());
    ASSERT_EQ(remarks.size(), 1U);
    EXPECT_NE(remarks[0].find("was left out: it broke down."), std::string::npos) << remarks[0];
}

TEST(OnDeviceTranscriber, anEngineThatHearsNothingAtAllIsGivenUp) {
    Hummed const hummed;
    std::atomic<int> asked = 0;
    auto const broken = workOf([&](auto const&, auto const&) -> std::vector<HeardWord> {
        ++asked;
        throw RecogniserLost("it broke down");
    });
    EXPECT_EQ(failureOf(OnDeviceTranscriber(broken), {{hummed.file}}), "Transcription failed: it broke down");
    EXPECT_LE(asked, 10) << "of 7 pieces with 2 tries each";
    auto const silenced = workOf([](auto const&, auto const&) { return std::vector<HeardWord>{}; });
    EXPECT_TRUE(OnDeviceTranscriber(silenced).transcribe({{hummed.file}}, "en-US").words.empty());
}

TEST(OnDeviceTranscriber, cancellingEndsItAtOnce) {
    Hummed const hummed;
    std::stop_source stop;
    auto const hanging = workOf([&](auto const&, std::stop_token const& ending) -> std::vector<HeardWord> {
        stop.request_stop();
        while (!ending.stop_requested()) std::this_thread::yield();
        throw VoiceError(VoiceError::Kind::cancelled, "Transcription was cancelled.");
    });
    EXPECT_EQ(failureOf(OnDeviceTranscriber(hanging), {{hummed.file}}, {.stop = stop.get_token()}),
              "Transcription was cancelled.");
}

TEST(OnDeviceTranscriber, whatIsNoSoundIsSaid) {
    TestFolder const folder;
    std::ofstream(folder / "text.wav") << "This is no sound.";
    OnDeviceTranscriber const transcriber(workOf(slowAtFirst()));
    std::vector<std::string> remarks;
    TranscriptionWatch const watch{.remark = [&](auto const& sentence) { remarks.push_back(sentence); }};
    EXPECT_EQ(failureOf(transcriber, {}), "This recording has no microphone audio to transcribe.");
    EXPECT_EQ(failureOf(transcriber, {{folder / "text.wav"}}, watch), "could not read audio");
    EXPECT_EQ(failureOf(transcriber, {{folder / "missing.wav"}}, watch), "could not read audio");
    EXPECT_EQ(remarks.size(), 2U) << "why";
}

TEST(OnDeviceTranscriber, silenceAndSteadyNoiseGiveNoWordsWithoutAnEngine) {
    TestFolder const folder;
    writeWAV(folder / "silence.wav", silent(12));
    writeWAV(folder / "noise.wav", hiss(15, 0.2F));
    auto const never = workOf([](auto const&, auto const&) -> std::vector<HeardWord> {
        ADD_FAILURE() << "asked";
        return {};
    });
    auto const transcript =
        OnDeviceTranscriber(never).transcribe({{folder / "silence.wav"}, {folder / "noise.wav", 12}}, "en-US");
    EXPECT_TRUE(transcript.words.empty());
    ASSERT_EQ(transcript.unrecognisedSounds.size(), 1U);
    EXPECT_NEAR(transcript.unrecognisedSounds[0].start, 12, 0.1);
}

TEST(OnDeviceTranscriber, ofTwoMicrophonesEachWordIsTakenOnce) {
    Hummed const hummed(25);
    auto const once = OnDeviceTranscriber(workOf(slowAtFirst(), 1)).transcribe({{hummed.file}}, "en-US");
    auto const twice =
        OnDeviceTranscriber(workOf(slowAtFirst(), 1)).transcribe({{hummed.file}, {hummed.file, 0.05}}, "en-US");
    EXPECT_EQ(once.words.size(), twice.words.size());
}

}
