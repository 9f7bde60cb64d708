#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

class Recogniser;

/// Files of the user's own instead of those that are found by themselves.
inline Preference<std::string> const whisperProgramPreference{"com.tavaro.transcription.whisperProgram", ""};
inline Preference<std::string> const whisperModelPreference{"com.tavaro.transcription.whisperModel", ""};

/// Where engines are looked for.
struct EnginePlaces {
    std::optional<std::filesystem::path> listener; // the program of the embedded engine
    std::filesystem::path speechModel;             // its model folder
    std::filesystem::path whisperModels;           // the user's folder of models, ggml-*.bin
    std::filesystem::path whisperProgram;          // empty: looked for in the search path
    std::filesystem::path whisperModel;            // empty: the best one of the folder

    static EnginePlaces usual();
    static EnginePlaces usual(Preferences& preferences);
};

/// What can transcribe on this machine, or could.
struct TranscriptionEngine {
    std::string id; // "whisper", "pocketsphinx"
    std::string name;
    bool isReady = false;
    std::string languages; // a phrase
    std::string accuracy;  // a sentence
    std::string advice;    // how to get it, or how to get it better; a sentence
    std::optional<std::string> program;
    std::optional<std::string> model;

    static constexpr auto fields = std::tuple{
        field("id", &TranscriptionEngine::id),
        field("name", &TranscriptionEngine::name),
        field("isReady", &TranscriptionEngine::isReady),
        field("languages", &TranscriptionEngine::languages),
        field("accuracy", &TranscriptionEngine::accuracy),
        field("advice", &TranscriptionEngine::advice),
        field("program", &TranscriptionEngine::program),
        field("model", &TranscriptionEngine::model),
    };
    bool operator==(TranscriptionEngine const&) const = default;
};
static_assert(listsEveryField<TranscriptionEngine>);

inline constexpr std::string_view whisperEngine = "whisper";
inline constexpr std::string_view sphinxEngine = "pocketsphinx";

/// The preferred first. Looks at the disk, and asks a program or two what they are.
std::vector<TranscriptionEngine> transcriptionEngines(EnginePlaces const& places);

/// An engine that understands the locale: the one of that id, or the first that is ready. Throws `VoiceError`: where
/// none understands it, its model is missing, or there is no such engine.
TranscriptionEngine chosenEngine(std::vector<TranscriptionEngine> const& engines, std::string_view id,
                                 std::string_view locale);

/// How an engine is put to work.
struct EngineWork {
    int atOnce = 1;           // recognisers side by side
    double pieceSeconds = 25; // how long a piece of sound it likes at most
    std::function<std::unique_ptr<Recogniser>()> makeRecogniser;
};
EngineWork workOf(TranscriptionEngine const& engine, std::string_view locale);

}
