#include <TavaroVoice/SystemVoices/Private/FestivalSpeaker.h>

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Private/SpeechBuilder.h>
#include <TavaroVoice/SystemVoices/Private/EngineFailure.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroPlatform/Processes/ProgramRun.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <fmt/format.h>
#include <span>
#include <sstream>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view beginning = "system:festival/";
constexpr auto engine = "festival";
constexpr std::size_t phrasesOfRun = 32; // each has an open file

struct Language {
    std::string_view folder, tag;
};
constexpr std::array<Language, 11> languages{{{"us", "en-US"},
                                              {"english", "en-GB"},
                                              {"spanish", "es-ES"},
                                              {"italian", "it-IT"},
                                              {"czech", "cs-CZ"},
                                              {"finnish", "fi-FI"},
                                              {"russian", "ru-RU"},
                                              {"polish", "pl-PL"},
                                              {"catalan", "ca-ES"},
                                              {"hindi", "hi-IN"},
                                              {"telugu", "te-IN"}}};

/// What is part of the commands for festival, which would obey anything else.
bool isVoiceName(std::string_view name) {
    return !name.empty() && std::ranges::all_of(name, [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
}

bool isIntelligible(std::string_view name) { return name.ends_with("_hts"); }

std::string languageOf(std::string const& folder, std::string const& voice) {
    constexpr std::array<std::string_view, 2> american{"kal_diphone", "ked_diphone"};
    if (std::ranges::find(american, voice) != american.end()) return "en-US";
    auto const found = std::ranges::find(languages, folder, &Language::folder);
    return found == languages.end() ? "" : std::string(found->tag);
}

std::vector<fs::path> foldersIn(fs::path const& folder) {
    std::vector<fs::path> folders;
    std::error_code code;
    for (auto entry = fs::directory_iterator(folder, code); !code && entry != fs::directory_iterator();
         entry.increment(code))
        if (entry->is_directory(code)) folders.push_back(entry->path());
    std::ranges::sort(folders);
    return folders;
}

/// Each phrase's sound goes into a file without a name; the times of its words are printed, a line a token of the text.
constexpr std::string_view definitions = R"((define (tavaro_part word)
  (format t " %f %f"
    (item.feat word "R:SylStructure.daughter1.daughter1.segment_start")
    (item.feat word "R:SylStructure.daughtern.daughtern.R:Segment.end")))
(define (tavaro_word token)
  (let ((words (item.daughters token)))
    (if words
      (begin (format t "word") (mapcar tavaro_part words) (format t "\n")))))
(define (tavaro_say words file)
  (let ((u (utt.synth (eval (list 'Utterance 'Text words)))))
    (mapcar tavaro_word (utt.relation.items u 'Token))
    (utt.save.wave u file 'riff)
    (format t "done\n")))
)";

std::string preparation(std::string_view voice, double speed) {
    return fmt::format("(voice_{})\n{}(if (string-equal \"HTS\" (format nil \"%l\" (Parameter.get 'Synth_Method)))\n"
                       "  (set! hts_engine_params (append hts_engine_params (list (list \"-r\" {:.4f}))))\n"
                       "  (Parameter.set 'Duration_Stretch {:.4f}))\n",
                       voice, definitions, speed, 1 / speed);
}

/// Of words without quotes and backslashes.
std::string saying(SpokenPhrase const& phrase, FileDescriptor const& file) {
    return fmt::format("(tavaro_say \"{}\" \"/proc/{}/fd/{}\")\n", spokenText(phrase), ::getpid(), file.get());
}

/// From the first to the last part of a token that is heard: punctuation is one that is not.
WordTime timeOf(std::istringstream& parts) {
    WordTime whole, part;
    while (parts >> part.start >> part.end) {
        if (part.end <= part.start) continue;
        if (whole.end == 0) whole.start = part.start;
        whole.end = part.end;
    }
    return whole;
}

/// The times that were printed of each phrase that is done.
std::vector<std::vector<WordTime>> timesIn(std::string const& printed) {
    std::vector<std::vector<WordTime>> phrases;
    std::vector<WordTime> times;
    std::istringstream lines(printed);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream parts(line);
        std::string kind;
        parts >> kind;
        if (kind == "done") phrases.push_back(std::exchange(times, {}));
        if (kind == "word") times.push_back(timeOf(parts));
    }
    return phrases;
}

std::string contents(FileDescriptor const& file) {
    struct stat about {};
    if (::fstat(file.get(), &about) != 0 || about.st_size > (256 << 20)) return {};
    std::string bytes(static_cast<std::size_t>(about.st_size), '\0');
    auto const count = file.readAt(0, std::as_writable_bytes(std::span(bytes)));
    bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
    return bytes;
}

std::chrono::milliseconds patienceFor(std::string const& script) {
    return std::chrono::seconds(30) + std::chrono::milliseconds(50 * script.size());
}

}

std::vector<Voice> FestivalSpeaker::voices() {
    std::vector<Voice> voices;
    for (auto const& language : foldersIn(folder_)) {
        for (auto const& folder : foldersIn(language)) {
            auto const name = folder.filename().string();
            if (!isVoiceName(name)) continue;
            voices.push_back({.id = std::string(beginning) + name,
                              .name = name,
                              .language = languageOf(language.filename().string(), name),
                              .engine = engine,
                              .description = isIntelligible(name) ? "Clear: the best that needs no network." : ""});
        }
    }
    // The kind that is understood best first.
    std::stable_partition(voices.begin(), voices.end(), [](Voice const& voice) { return isIntelligible(voice.name); });
    return voices;
}

Speech FestivalSpeaker::speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) {
    auto const phrases = spokenPhrases(text, Letters::ascii);
    auto const all = voices();
    auto const voice = std::ranges::find(all, settings.voiceID, &Voice::id);
    if (voice == all.end()) throw noSuchVoice(settings.voiceID);
    SpeechBuilder builder;
    for (std::size_t at = 0; at < phrases.size(); at += phrasesOfRun) {
        expectNoStop(stop);
        auto const some = std::span(phrases).subspan(at, std::min(phrasesOfRun, phrases.size() - at));
        auto script = preparation(voice->name, audibleSpeed(settings.speed));
        std::vector<FileDescriptor> files;
        for (auto const& phrase : some) {
            files.emplace_back(::memfd_create("phrase", MFD_CLOEXEC));
            script += saying(phrase, files.back());
        }
        auto const patience = patienceFor(script);
        auto const answer = runProgram({{program_.string(), "--pipe"}, std::move(script), patience}, stop);
        expectGood(answer, engine);
        auto const times = timesIn(answer.out);
        if (times.size() != some.size()) throw engineFailure(engine, "it did not say all of a line");
        for (std::size_t i = 0; i < some.size(); ++i) {
            try {
                builder.append(soundOfWAV(contents(files[i])), some[i], times[i]);
            } catch (MediaError const& error) {
                throw engineFailure(engine, error.detail());
            }
        }
    }
    return builder.take();
}

}
