#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONValue.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

using namespace tavaro;
namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

constexpr auto said = "Click on the button in the top left corner, and wait until the window is open.";

/// Works on a project of ten seconds, made without any movie, in which a voice of this machine may speak.
class TranscribeCommand : public ProcessFixture {
protected:
    TranscribeCommand() {
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
        project.assetDurations["screen.mp4"] = 10;
        package.createDirectories();
        package.save(project);
    }
    /// A track on which it is said from 0.5 s on.
    void addSpeech(AudioRole role) {
        auto narrated = project;
        narrated.voiceover.emplace().segments = {{.text = said, .anchor = 0}};
        package.save(narrated);
        auto const spoken = tavaro({"voiceover", path("tour.recproj"), "--voice", "system:flite/slt"});
        ASSERT_EQ(spoken.exitCode, 0) << spoken.error;
        auto const line = package.load().voiceover->segments.at(0);
        project.audioTracks.push_back(
            {.role = role, .clips = {{.asset = line.audioAsset.value(), .start = 0.5, .duration = line.duration()}}});
        package.save(project);
    }
    Outcome transcribe(Arguments words = {}) {
        words.insert(words.begin(), {"transcribe", path("tour.recproj")});
        return tavaro(words);
    }
    bool hasEmbeddedEngine() {
        auto const engines = JSONValue::parse(tavaro({"transcribe", "--engines", "--json"}).out);
        for (auto const& engine : *engines.as<JSONValue::Array>())
            if (*engine.find<std::string>("id") == "pocketsphinx") return *engine.find<bool>("isReady");
        return false;
    }

    DemoProject project;
    ProjectPackage const package{path("tour.recproj")};
};

/// A whisper.cpp whose model is too large for this machine, found before all other programs.
class BrokenWhisper {
public:
    explicit BrokenWhisper(fs::path const& folder) : path_(std::getenv("PATH")) {
        fs::create_directories(folder / "data/Tavaro/Models");
        auto const model = folder / "data/Tavaro/Models/ggml-large.bin";
        std::ofstream(model) << "lmgg";
        fs::resize_file(model, 2 << 20);
        std::ofstream(folder / "whisper-cli") << "#!/bin/sh\n[ \"$1\" = --help ] && exec echo --output-json-full\n"
                                                 "echo 'error: out of memory' >&2\nexit 3\n";
        fs::permissions(folder / "whisper-cli", fs::perms::owner_all);
        ::setenv("PATH", (folder.string() + ":" + path_).c_str(), 1);
    }
    ~BrokenWhisper() { ::setenv("PATH", path_.c_str(), 1); }

private:
    std::string const path_;
};

}

TEST_F(TranscribeCommand, whatTheMicrophoneHeardBecomesTheProjectsTranscript) {
    if (!hasEmbeddedEngine()) GTEST_SKIP() << "The package pocketsphinx-en-us is not installed.";
    ASSERT_NO_FATAL_FAILURE(addSpeech(AudioRole::microphone));
    auto const heard = transcribe({"--locale", "en-US", "--json"});
    ASSERT_EQ(heard.exitCode, 0) << heard.error;
    EXPECT_EQ(heard.error, "");
    auto const report = JSONValue::parse(heard.out);
    EXPECT_EQ(*report.find<std::string>("engine"), "pocketsphinx");
    EXPECT_EQ(*report.find<std::string>("locale"), "en-US");
    for (auto const* const word : {"button", "corner", "window", "open"})
        EXPECT_THAT(*report.find<std::string>("text"), HasSubstr(word));
    auto const transcript = package.load().transcript.value();
    ASSERT_EQ(*report.find<std::int64_t>("words"), std::ssize(transcript->words));
    EXPECT_GE(transcript->words.front().start, 0.5) << "times are the recording's";
    EXPECT_LE(transcript->words.back().end, project.audioTracks[0].clips[0].range().end());
}

TEST_F(TranscribeCommand, whatCannotBeTranscribedIsSaidWithWhatHelpsAndTheProjectStays) {
    auto const noMicrophone = std::string("This recording has no microphone audio to transcribe.");
    EXPECT_EQ(transcribe().error, noMicrophone + "\n");
    ASSERT_NO_FATAL_FAILURE(addSpeech(AudioRole::system));
    auto const before = read("tour.recproj/project.json");
    auto const silent = transcribe();
    EXPECT_EQ(silent.exitCode, 1);
    EXPECT_EQ(silent.error, noMicrophone + " --track system has sound.\n");
    EXPECT_EQ(transcribe({"--track", "camera"}).error,
              "The project has no camera track to transcribe. --track system has sound.\n");
    for (std::string const locale : {"de-DE", "klingon"}) {
        auto const refused = transcribe({"--track", "system", "--locale", locale, "--json"});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_EQ(refused.out, "");
        EXPECT_THAT(refused.error, HasSubstr("On-device transcription doesn't support " + locale + ". `tavaro"));
    }
    EXPECT_EQ(transcribe({"--track", "tuba"}).exitCode, 2);
    EXPECT_EQ(transcribe({"--engine", "other"}).exitCode, 2);
    EXPECT_EQ(read("tour.recproj/project.json"), before);
}

TEST_F(TranscribeCommand, whereAnEngineBreaksDownTheOtherIsNamedAndWorks) {
    if (!hasEmbeddedEngine()) GTEST_SKIP() << "The package pocketsphinx-en-us is not installed.";
    ASSERT_NO_FATAL_FAILURE(addSpeech(AudioRole::system));
    BrokenWhisper const whisper(folder);
    auto const broken = transcribe({"--track", "system", "--locale", "en-US"});
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_THAT(broken.error, HasSubstr("Transcription failed: whisper.cpp broke down: error: out of memory. Another "
                                        "engine is ready: --engine pocketsphinx.\n"));
    auto const heard = transcribe({"--track", "system", "--locale", "en-US", "--engine", "pocketsphinx"});
    EXPECT_EQ(heard.exitCode, 0) << heard.error;
    EXPECT_THAT(heard.out, StartsWith("Transcribed "));
}
