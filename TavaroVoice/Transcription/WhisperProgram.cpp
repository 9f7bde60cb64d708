#include <TavaroVoice/Transcription/Private/WhisperProgram.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Files/FileBytes.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroPlatform/Processes/ProgramRun.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/ListenerTalk.h>
#include <TavaroVoice/Transcription/Private/WhisperOutput.h>

#include <system_error>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t mostOutput = std::uint64_t{64} << 20; // some megabytes an hour are usual
constexpr auto ownerOnly = fs::perms::owner_read | fs::perms::owner_write;

/// Files of one piece, gone with it.
struct PieceFiles {
    explicit PieceFiles(fs::path const& base)
        : sound(base.string() + ".wav")
        , output(base)
        , words(base.string() + ".json") {}
    ~PieceFiles() {
        std::error_code ignored;
        fs::remove(sound, ignored);
        fs::remove(words, ignored);
    }

    fs::path const sound, output, words;
};

void write(fs::path const& file, std::string const& bytes) {
    PendingFile pending(file, ownerOnly);
    pending.append(bytes);
    pending.commit();
}

/// The last line of what a program says on standard error, which is where it says why.
std::string lastLine(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return excerpt(text.substr(text.find_last_of('\n') + 1), 200);
}

[[noreturn]] void failFor(ProgramAnswer const& answer) {
    using End = ProgramAnswer::End;
    switch (answer.end) {
    case End::cancelled: throw VoiceError(VoiceError::Kind::cancelled, "Transcription was cancelled.");
    case End::notStarted:
        throw VoiceError(VoiceError::Kind::failed, "Transcription failed: whisper.cpp does not start");
    case End::outOfTime: throw RecogniserLost("whisper.cpp took too long");
    default: break;
    }
    auto const said = lastLine(answer.error);
    throw RecogniserLost(said.empty() ? "whisper.cpp broke down" : "whisper.cpp broke down: " + said);
}

}

std::vector<std::string> WhisperProgram::command(fs::path const& sound, fs::path const& output) const {
    return {options_.program,
            "-m",
            options_.model,
            "-f",
            sound,
            "-l",
            options_.language,
            "-t",
            std::to_string(options_.threads),
            "-ojf",
            "-of",
            output};
}

std::vector<HeardWord> WhisperProgram::hear(MonoSound const& piece, std::stop_token const& stop) {
    PieceFiles const files(folder_.path() / (std::string(SpeechFolder::prefix) + std::to_string(pieces_++)));
    write(files.sound, wavBytes(piece));
    double const seconds = static_cast<double>(piece.samples.size()) / speechRate;
    auto const perSecond = std::chrono::duration<double, std::milli>(options_.perSecond) * seconds;
    auto const answer =
        runProgram({.command = command(files.sound, files.output),
                    .patience = options_.start + std::chrono::ceil<std::chrono::milliseconds>(perSecond)},
                   stop);
    if (!answer.isGood()) failFor(answer);
    try {
        auto const words = FileBytes::read(files.words, mostOutput);
        if (!words) throw RecogniserLost("whisper.cpp wrote no words");
        return soundWords(wordsOfWhisper(words->bytes()), seconds);
    } catch (FileError const& error) {
        throw RecogniserLost(error.what());
    }
}

bool WhisperProgram::answersAsWhisper(fs::path const& program) {
    constexpr std::chrono::seconds patience{2};
    auto const answer = runProgram({.command = {program, "--help"}, .patience = patience, .mostOutput = 1 << 16});
    auto const knows = [&](std::string_view word) {
        return answer.out.find(word) != std::string::npos || answer.error.find(word) != std::string::npos;
    };
    return knows("--output-json-full");
}

}
