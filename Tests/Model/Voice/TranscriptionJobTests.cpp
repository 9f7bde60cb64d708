#include <Tavaro/Model/Voice/TranscriptionJob.h>

#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/TimelineWords.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

/// A minute of a recording whose microphone began 1.5 s after it.
DemoProject minute() {
    DemoProject project;
    project.timeline.clips.push_back({.asset = "screen.mp4", .duration = 60});
    project.assetDurations = {{"screen.mp4", 60}, {"microphone.caf", 58.5}};
    project.audioTracks.push_back({.clips = {{.asset = "microphone.caf", .start = 1.5, .duration = 58.5}}});
    return project;
}

/// A package with a microphone of hums, and an engine that hears "hum" in the middle of each piece of it.
class TranscriptionJobTest : public testing::Test {
protected:
    TranscriptionJobTest() {
        package.createDirectories();
        AudioFileWriter sound(package.assetURL("microphone.caf"), AudioFileFormat::whole16);
        std::vector<StereoSample> samples(static_cast<std::size_t>(58.5 * audioRate));
        for (std::size_t i = 0; i < samples.size(); ++i) {
            double const t = static_cast<double>(i) / audioRate;
            double const loud = std::fmod(t, 2.5) < 2 ? std::abs(std::sin(12 * t)) : 0;
            samples[i].left = samples[i].right = static_cast<float>(0.3 * loud * std::sin(880 * t));
        }
        sound.append(samples);
        sound.finish();
        package.save(minute());
        std::ofstream(places.speechModel / "en-us.lm.bin") << "model";
        answers(R"({"words":[{"text":"hum","start":1.1,"end":1.5,"confidence":1}]})");
    }
    void answers(std::string const& reply) {
        places.listener = folder.path() / "listener";
        std::ofstream(*places.listener) << "#!/bin/sh\necho '{}'\nwhile read -r line; do echo '" << reply
                                        << "'; done\n";
        fs::permissions(*places.listener, fs::perms::owner_all);
    }
    TranscriptionRequest request(TranscriptionChoices const& choices = {.locale = "en-US"}) const {
        return {.sounds = spokenSounds(minute(), package, choices.track), .choices = choices, .places = places};
    }
    std::string failureOf(TranscriptionRequest request) {
        auto job = transcriptionJob(queue, std::move(request));
        job.start();
        try {
            job.wait();
            return "none";
        } catch (VoiceError const& error) {
            return error.what();
        }
    }

    TemporaryFolder folder;
    ProjectPackage package{folder.path() / "take.recproj"};
    MainQueue queue;
    EnginePlaces places{.listener = {},
                        .speechModel = folder.path(),
                        .whisperModels = folder.path() / "none",
                        .whisperProgram = folder.path() / "none",
                        .whisperModel = {}};
};

}

TEST(SpokenSounds, theMicrophoneIsWhereItWasRecordedHoweverTheFilmIsCut) {
    ProjectPackage const package("take.recproj");
    auto project = minute();
    std::vector<SpokenSound> const expected{{package.assetURL("microphone.caf"), 1.5}};
    EXPECT_EQ(spokenSounds(project, package, AudioRole::microphone), expected);
    removeTimeRange(project, 10, 7);
    removeTimeRange(project, 0, 2.5);
    changeSpeed(project, {20, 10}, 3);
    EXPECT_EQ(spokenSounds(project, package, AudioRole::microphone), expected);
    project.audioTracks[0].clips.back().start += 0.4; // one part was moved by hand
    EXPECT_EQ(spokenSounds(project, package, AudioRole::microphone), expected);
    EXPECT_TRUE(spokenSounds(project, package, AudioRole::system).empty());
}

TEST_F(TranscriptionJobTest, wordsComeWhileItWorksAndAreTakenAsOneStepBesideOtherEdits) {
    auto job = transcriptionJob(queue, request());
    std::size_t told = 0;
    job.onProgress([&](TranscriptionProgress const& progress) { told += progress.words.size(); });
    job.start();
    auto const& made = job.wait();
    EXPECT_EQ(made.engine.id, "pocketsphinx");
    ASSERT_GE(made.transcript.words.size(), 2U);
    EXPECT_EQ(told, made.transcript.words.size()) << "none is left out";
    EXPECT_NEAR(made.transcript.words[0].start, 2.6, 0.001) << "1.1 s into the microphone's sound";

    OpenProject open(package.url());
    open.edit("Cut", [](DemoProject& project) { removeTimeRange(project, 0, 2); });
    auto const cut = open.document();
    open.commit(transcriptionStep, [&](DemoProject& project) { keepTranscript(project, made.transcript); });
    EXPECT_EQ(open.document().timeline, cut.timeline);
    EXPECT_NEAR(timelineWords(open.document())[0].range.start, 0.6, 0.001);
    open.undo();
    EXPECT_EQ(open.document(), cut);
}

TEST_F(TranscriptionJobTest, whatCannotBeTranscribedIsSaid) {
    EXPECT_EQ(failureOf(request({.locale = "de-DE"})), "On-device transcription doesn't support de-DE.");
    EXPECT_EQ(failureOf(request({.locale = "klingon"})), "On-device transcription doesn't support klingon.");
    EXPECT_EQ(failureOf(request({.locale = "en-US", .track = AudioRole::system})),
              "This recording has no microphone audio to transcribe.");
    answers(R"({"words":[]})");
    EXPECT_EQ(failureOf(request()), "No speech was found.");
    answers(R"({"failure":"the model is damaged"})");
    EXPECT_EQ(failureOf(request()), "Transcription failed: the model is damaged");
}

TEST_F(TranscriptionJobTest, cancellingEndsIt) {
    auto job = transcriptionJob(queue, request());
    job.onProgress([&](auto const&) { job.cancel(); });
    answers("");
    std::ofstream(*places.listener) << "#!/bin/sh\necho '{}'\nexec sleep 60\n";
    job.start();
    job.cancel();
    EXPECT_THROW(job.wait(), VoiceError);
}

}
