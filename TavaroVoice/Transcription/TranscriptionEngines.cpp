#include <TavaroVoice/Transcription/TranscriptionEngines.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/Private/ListenerProcess.h>
#include <TavaroVoice/Transcription/Private/WhisperProgram.h>
#include <TavaroVoice/Transcription/SpokenLocale.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr char const* listenerName = "tavaro-listener";
constexpr std::array<std::string_view, 4> modelMark{"lmgg", "tjgg", "algg", "fmgg"}; // the kinds of "ggml" file
constexpr std::uintmax_t smallestModel = std::uintmax_t{1} << 20; // bytes; the smallest there are have 30 MB
constexpr int mostListeners = 8;
constexpr double whisperPieceSeconds = 240;

unsigned processors() { return static_cast<unsigned>(std::max(::sysconf(_SC_NPROCESSORS_ONLN), 1L)); }

/// What a broken download left is none.
bool isModel(fs::path const& file) {
    std::error_code code;
    if (!fs::is_regular_file(file, code) || fs::file_size(file, code) < smallestModel || code) return false;
    std::array<char, 4> mark{};
    std::ifstream(file, std::ios::binary).read(mark.data(), mark.size());
    return std::ranges::find(modelMark, std::string_view(mark.data(), mark.size())) != modelMark.end();
}

/// Models of speech; those that only tell where some is have their own names.
bool isNamedAsModel(std::string const& name) {
    return name.starts_with("ggml-") && name.ends_with(".bin") && name.find("silero") == std::string::npos;
}

/// The largest, which understands best.
std::optional<fs::path> bestModel(fs::path const& folder) {
    std::optional<fs::path> best;
    std::uintmax_t most = 0;
    std::error_code code;
    for (fs::directory_iterator each(folder, code), end; !code && each != end; each.increment(code)) {
        std::error_code ignored;
        auto const size = fs::file_size(each->path(), ignored);
        if (ignored || !isNamedAsModel(each->path().filename().string()) || !isModel(each->path())) continue;
        if (!best || size > most || (size == most && each->path() < *best)) best = each->path();
        most = std::max(most, size);
    }
    return best;
}

std::optional<fs::path> whisperProgram(EnginePlaces const& places) {
    if (!places.whisperProgram.empty())
        return WhisperProgram::answersAsWhisper(places.whisperProgram) ? std::optional(places.whisperProgram)
                                                                       : std::nullopt;
    for (auto const* const name : {"whisper-cli", "whisper-cpp", "main"}) {
        auto const found = findProgram(name);
        if (found && WhisperProgram::answersAsWhisper(*found)) return found;
    }
    return std::nullopt;
}

bool isEnglishOnly(std::string const& model) {
    return fs::path(model).filename().string().find(".en") != std::string::npos;
}

std::string whisperAdvice(TranscriptionEngine const& engine, EnginePlaces const& places) {
    if (engine.isReady) return "Larger models understand more, and take longer.";
    std::string advice;
    if (!engine.program && !places.whisperProgram.empty())
        advice = "“" + excerpt(places.whisperProgram.string()) + "” does not answer as whisper.cpp's program does. ";
    else if (!engine.program)
        advice = "Install whisper.cpp, so that its program whisper-cli is in the search path. ";
    if (!engine.model)
        advice += "Put one of its models, as ggml-base.bin, into “" + places.whisperModels.string() + "”. ";
    advice.pop_back();
    return advice;
}

TranscriptionEngine whisper(EnginePlaces const& places) {
    TranscriptionEngine engine{
        .id = std::string(whisperEngine), .name = "whisper.cpp", .languages = "about 99 languages"};
    auto const model =
        places.whisperModel.empty() ? bestModel(places.whisperModels) : std::optional(places.whisperModel);
    if (model && isModel(*model)) engine.model = model->string();
    if (auto const program = whisperProgram(places)) engine.program = program->string();
    engine.isReady = engine.program && engine.model;
    if (engine.model && isEnglishOnly(*engine.model)) engine.languages = "English";
    engine.accuracy =
        "It writes punctuation and capital letters and usually makes few mistakes; it was not measured here.";
    engine.advice = whisperAdvice(engine, places);
    return engine;
}

TranscriptionEngine sphinx(EnginePlaces const& places) {
    TranscriptionEngine engine{
        .id = std::string(sphinxEngine), .name = "PocketSphinx", .languages = "American English"};
    std::error_code code;
    if (fs::is_regular_file(places.speechModel / "en-us.lm.bin", code)) engine.model = places.speechModel.string();
    if (places.listener) engine.program = places.listener->string();
    engine.isReady = engine.program && engine.model;
    engine.accuracy = "About 1 word in 12 to 1 in 5 was wrong with clear synthetic voices, and more with people in a "
                      "room; it writes neither punctuation nor capital letters. Good enough to find a place by, and to "
                      "try.";
    engine.advice = engine.isReady  ? "It is built in; whisper.cpp understands much better."
                    : !engine.model ? "Install the package pocketsphinx-en-us."
                                    : "Its program tavaro-listener is missing; install Tavaro again.";
    return engine;
}

bool understands(TranscriptionEngine const& engine, std::string_view locale) {
    bool const isEnglish = languageOfLocale(locale) == "en";
    return isEnglish || (engine.id == whisperEngine && !(engine.model && isEnglishOnly(*engine.model)));
}

[[noreturn]] void failForLocale(std::string_view locale) {
    throw VoiceError(VoiceError::Kind::unknownLocale,
                     "On-device transcription doesn't support " + excerpt(std::string(locale)) + ".");
}

[[noreturn]] void failForModel(std::string_view locale, TranscriptionEngine const& engine) {
    auto const advice = engine.advice.substr(0, engine.advice.find_last_not_of('.') + 1);
    throw VoiceError(VoiceError::Kind::noEngine, "The speech model for " + excerpt(std::string(locale)) +
                                                     " isn't on this computer yet. " + advice +
                                                     " — after that, transcription works offline.");
}

}

EnginePlaces EnginePlaces::usual() {
    return {.listener = findHiddenProgram(listenerName),
            .speechModel = TAVARO_SPHINX_MODELS "/en-us",
            .whisperModels = folders::applicationSupport() / "Tavaro" / "Models",
            .whisperProgram = {},
            .whisperModel = {}};
}

EnginePlaces EnginePlaces::usual(Preferences& preferences) {
    auto places = usual();
    places.whisperProgram = preferences.get(whisperProgramPreference);
    places.whisperModel = preferences.get(whisperModelPreference);
    return places;
}

std::vector<TranscriptionEngine> transcriptionEngines(EnginePlaces const& places) {
    return {whisper(places), sphinx(places)};
}

TranscriptionEngine chosenEngine(std::vector<TranscriptionEngine> const& engines, std::string_view id,
                                 std::string_view locale) {
    TranscriptionEngine const* missing = nullptr;
    bool isKnown = id.empty();
    for (auto const& engine : engines) {
        if (!id.empty() && engine.id != id) continue;
        isKnown = true;
        if (!understands(engine, locale)) continue;
        if (engine.isReady) return engine;
        missing = &engine; // the last, which is the one that is had most easily
    }
    if (!isKnown)
        throw VoiceError(VoiceError::Kind::noEngine,
                         "There is no engine “" + excerpt(std::string(id)) + "” for transcription.");
    // Where only an engine that has to be got would understand, the language is as good as not supported, unless it was
    // asked for.
    if (missing && (!id.empty() || missing->id == sphinxEngine)) failForModel(locale, *missing);
    failForLocale(locale);
}

EngineWork workOf(TranscriptionEngine const& engine, std::string_view locale) {
    auto const cores = static_cast<int>(processors());
    if (engine.id == whisperEngine) {
        WhisperProgram::Options options{.program = engine.program.value(),
                                        .model = engine.model.value(),
                                        .language = languageOfLocale(locale),
                                        .threads = std::min(cores, mostListeners)};
        return {.pieceSeconds = whisperPieceSeconds,
                .makeRecogniser = [options = std::move(options)] { return std::make_unique<WhisperProgram>(options); }};
    }
    ListenerProcess::Options options{.command = {engine.program.value(), engine.model.value()}};
    return {.atOnce = std::min(cores, mostListeners),
            .makeRecogniser = [options = std::move(options)] { return std::make_unique<ListenerProcess>(options); }};
}

}
