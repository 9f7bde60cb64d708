#pragma once

#include "../../Core/Package/TemporaryFolder.h"
#include "../../Voice/Voiceover/ToneSpeaker.h"
#include "../Editor/TestEditor.h"
#include "../Playback/FakeOutput.h"

#include <Tavaro/Studio/Voice/VoiceMeans.h>

#include <TavaroMedia/Audio/AudioFileWriter.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tavaro {

/// Voices that a test makes up, an engine that hears what a test says, and a sound device whose clock it turns.
struct TestVoices {
    VoiceMeans means() {
        auto const offered = [this] { return OfferedVoices{.voices = voices}; };
        return {.service =
                    [this, offered] {
                        return VoiceService{studio.speakers(), offered};
                    },
                .engines = [this] { return places; },
                .output = [device = device] { return std::make_unique<FakeOutput>(device); },
                .samples = folder / "samples"};
    }

    /// Stands in for whisper.cpp's program: once the file "go" is there, these words were said, half a second each.
    void hears(std::vector<std::string> const& words) {
        std::string text, tokens;
        for (auto const& word : words) text += " " + word;
        for (std::size_t i = 0; i < words.size(); ++i)
            tokens += (i ? "," : "") + std::string(R"({"text":" )") + words[i] + R"(","offsets":{"from":)" +
                      std::to_string(i * 500) + R"(,"to":)" + std::to_string(i * 500 + 400) + R"(},"id":1,"p":0.9})";
        auto const program = folder / "whisper-cli";
        std::ofstream(program) << "#!/bin/sh\n"
                                  "[ \"$1\" = --help ] && { echo '-ojf, --output-json-full' >&2; exit 0; }\n"
                                  "while [ $# -gt 0 ]; do [ \"$1\" = -of ] && out=$2; shift; done\n"
                               << "while [ ! -e '" << (folder / "go").string() << "' ]; do sleep 0.02; done\n"
                               << "cat > \"$out.json\" <<END\n"
                               << R"({"result":{"language":"en"},"transcription":[{"offsets":{"from":0,"to":3000},)"
                               << R"("text":")" << text << R"(","tokens":[)" << tokens << "]}]}\nEND\n";
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        std::filesystem::create_directories(folder / "Models");
        std::ofstream(folder / "Models/ggml-test.bin") << "lmgg and more";
        std::filesystem::resize_file(folder / "Models/ggml-test.bin", 1 << 20);
        places = {.whisperModels = folder / "Models", .whisperProgram = program};
    }
    void go() const { std::ofstream(folder / "go") << "1"; }

    TemporaryFolder folder{TemporaryFolder::fastest()};
    ToneStudio studio;
    std::vector<Voice> voices{
        {.id = "system:tone", .name = "Tone", .language = "en-US", .engine = "flite", .description = "A tone."},
        {.id = "system:low", .name = "Low", .language = "en-GB", .engine = "espeak-ng"},
        {.id = "system:ton", .name = "Ton", .language = "de", .engine = "espeak-ng"},
        {.id = "anna", .name = "Anna", .language = "", .engine = "ElevenLabs", .description = "Calm."}};
    EnginePlaces places; // nothing is there
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
};

/// Ten seconds with lines at 1 and 5 s, both to be spoken.
inline DemoProject narrated() {
    auto project = shortFilm();
    project.voiceover.emplace().segments = {{.text = "one two", .anchor = 1, .start = 1},
                                            {.text = "three four", .anchor = 5, .start = 5}};
    return project;
}

/// Three seconds that somebody may be speaking in, as a recording's microphone.
inline void addSpeech(ProjectPackage const& package) {
    std::vector<StereoSample> samples(3 * 48'000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        bool const isSyllable = i / 9'600 % 2 == 0; // every other 0.2 s: what never pauses is no speech
        auto const value = static_cast<float>(isSyllable ? 0.3 * std::sin(static_cast<double>(i) * 0.05) : 0);
        samples[i] = {value, value};
    }
    AudioFileWriter writer(package.assetURL("mic.caf"), AudioFileFormat::whole16);
    writer.append(samples);
    writer.finish();
}

}
