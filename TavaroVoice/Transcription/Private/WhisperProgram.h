#pragma once

#include <TavaroVoice/Transcription/Private/Recogniser.h>
#include <TavaroVoice/Transcription/Private/SpeechFolder.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

/// whisper.cpp's program, run once for each piece: pieces are long, since it loads its model each time. Sound and words
/// pass through files of a `SpeechFolder`.
class WhisperProgram final : public Recogniser {
public:
    struct Options {
        std::filesystem::path program;
        std::filesystem::path model;
        std::string language = "en"; // as whisper names it
        int threads = 1;
        /// How long it may take to load its model, and for each second of a piece beside that.
        std::chrono::milliseconds start{120'000};
        std::chrono::milliseconds perSecond{30'000};
    };
    explicit WhisperProgram(Options options) : options_(std::move(options)) {}

    std::vector<HeardWord> hear(MonoSound const& piece, std::stop_token const& stop) override;

    /// Whether a program says of itself that it is one that can be used. Asks it, for two seconds at most.
    static bool answersAsWhisper(std::filesystem::path const& program);

private:
    std::vector<std::string> command(std::filesystem::path const& sound, std::filesystem::path const& output) const;

    Options const options_;
    SpeechFolder folder_;
    int pieces_ = 0;
};

}
