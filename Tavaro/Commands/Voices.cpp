#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/CommandGroup.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/KeyAdvice.h>
#include <Tavaro/Commands/SecretEntry.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Voice/MachineVoices.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Keychain/KeychainError.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Voiceover/SpokenLines.h>
#include <TavaroVoice/Voiceover/VoiceChoice.h>
#include <TavaroVoice/Voices/VoiceBox.h>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iterator>
#include <map>
#include <stop_token>
#include <system_error>
#include <utility>

namespace tavaro::commands {

namespace {

struct ListedVoice {
    std::string id;
    std::string name;
    std::string language;
    std::string engine;
    std::string description;
    std::map<std::string, std::string> labels;

    static constexpr auto fields = std::tuple{
        field("id", &ListedVoice::id),
        field("name", &ListedVoice::name),
        field("language", &ListedVoice::language),
        field("engine", &ListedVoice::engine),
        field("description", &ListedVoice::description),
        field("labels", &ListedVoice::labels),
    };
};
static_assert(listsEveryField<ListedVoice>);

struct Desk {
    std::string language;
    std::string previewed; // a voice's id
    std::string output;
    PendingFile::IfTaken ifTaken = PendingFile::IfTaken::refuse;
    bool offersAll = false;
    bool asJSON = false;
};

std::string soundFileProblem(std::string const& file) {
    return endingOf(file) == ".wav" ? "" : "previews are written as .wav";
}

std::vector<Voice> voicesFor(Desk const& desk, VoiceBox& box) {
    auto voices = box.voices();
    bool const hasService = std::ranges::any_of(voices, [](Voice const& voice) { return !isSystemVoice(voice.id); });
    if (desk.offersAll && !hasService) {
        auto known = VoiceBox::builtInVoices();
        std::ranges::move(known, std::back_inserter(voices));
    }
    std::erase_if(voices, [&](Voice const& voice) { return !speaks(voice, desk.language); });
    return voices;
}

void print(std::vector<Voice> const& voices) {
    std::size_t longest = 0, longestName = 0;
    for (auto const& voice : voices) {
        longest = std::max(longest, voice.id.size());
        longestName = std::max(longestName, voice.name.size());
    }
    for (auto const& voice : voices)
        terminal::say("{:<{}}  {:<{}}  {:<8}  {:<10}  {}\n", voice.id, longest, voice.name, longestName, voice.language,
                      voice.engine, voice.description);
}

void list(Desk const& desk) {
    VoiceBox box;
    auto const voices = voicesFor(desk, box);
    if (desk.asJSON) {
        std::vector<ListedVoice> listed;
        for (auto const& voice : voices)
            listed.push_back({voice.id, voice.name, voice.language, voice.engine, voice.description, voice.labels});
        terminal::sayJSON(encodeJSON(listed));
    } else
        print(voices);
    if (!box.problem().empty()) terminal::tell("{}\n", box.problem());
    if (voices.empty() && !desk.language.empty()) terminal::tell("No voice here speaks “{}”.\n", desk.language);
    if (voices.empty() && desk.language.empty())
        terminal::tell("There is no voice on this machine; the packages festival and espeak-ng bring some.\n");
}

/// A service is paid for each sample, so one is kept, where the studio keeps its own.
MonoSound keptSample(std::string const& voiceID, SpeakerSource const& speakers, std::stop_token const& stop) {
    auto const folder = folders::caches() / "Voices";
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    if (code) throw FileError::writing(folder, code.value());
    auto const made = speakLines({.lines = {{UUID::random(), VoiceBox::previewLine}},
                                  .voice = chosenVoice({}, voiceID, {}),
                                  .assets = folder,
                                  .speakers = speakers},
                                 stop);
    if (!made.unspoken.empty()) throw VoiceError(made.unspoken.front().kind, made.unspoken.front().sentence);
    if (made.spoken.empty()) throw cancelledSpeech();
    constexpr double mostSeconds = 60;
    return soundOfFile(readWholeFile(folder / made.spoken.front().asset).value_or(""), mostSeconds);
}

MonoSound sampleOf(std::string const& voiceID, SpeakerSource const& speakers, std::stop_token const& stop) {
    if (!isSystemVoice(voiceID)) return keptSample(voiceID, speakers, stop);
    auto speech = speakers()->speak(VoiceBox::previewLine, {.voiceID = voiceID}, stop);
    return {std::move(speech.samples), speech.sampleRate};
}

/// Ctrl-C ends it.
MonoSound heard(Desk const& desk) {
    Interruption const interruption;
    std::stop_source stop;
    std::exception_ptr failure;
    MonoSound sound;
    auto const speakers = machineVoices().speakers;
    SerialQueue speaking("com.tavaro.preview");
    speaking.async([&] {
        try {
            sound = sampleOf(desk.previewed, speakers, stop.get_token());
        } catch (...) {
            failure = std::current_exception();
        }
    });
    while (!speaking.settles(std::chrono::milliseconds(50)))
        if (interruption.isRequested()) stop.request_stop();
    if (failure) std::rethrow_exception(failure);
    return sound;
}

void preview(Desk const& desk) {
    expectWritable(desk.output, desk.ifTaken);
    auto const sound = heard(desk);
    writeFileAtomically(desk.output, wavBytes(sound), desk.ifTaken);
    auto const duration = static_cast<double>(sound.samples.size()) / sound.rate;
    if (desk.asJSON)
        terminal::sayJSON(encodeJSON(
            JSONValue{JSONValue::Object{{"voice", desk.previewed}, {"path", desk.output}, {"duration", duration}}}));
    else
        terminal::sayPath(desk.output);
}

void show(Desk& desk) {
    if (desk.previewed.empty()) return list(desk);
    try {
        preview(desk);
    } catch (VoiceError const& error) {
        throw withKeyAdvice(error);
    }
}

/// What is wrong with the keychain is more than its status.
[[noreturn]] void fail(KeychainError const& error) {
    throw Error(error.reason.empty() || std::string_view(error.what()).ends_with(error.reason)
                    ? error.what()
                    : fmt::format("{}: {}", error.what(), error.reason));
}

void report(Desk const& desk, std::string const& state, std::string const& sentence) {
    if (desk.asJSON)
        terminal::sayJSON(encodeJSON(JSONValue{JSONValue::Object{{"key", state}}}));
    else
        terminal::say("{}\n", sentence);
}

void setKey(Desk& desk) {
    auto const key = readSecret("ElevenLabs API key (not shown): ");
    if (auto const problem = elevenLabsKey::problemOf(key.text()); !problem.empty()) throw Error(problem);
    try {
        elevenLabsKey::store(key);
    } catch (KeychainError const& error) {
        fail(error);
    }
    report(desk, "stored",
           "The key is in your keychain. `tavaro voices key check` asks ElevenLabs whether it is good.");
}

void checkKey(Desk& desk) {
    try {
        VoiceBox().service().validateKey();
    } catch (VoiceError const& error) {
        throw withKeyAdvice(error);
    }
    report(desk, elevenLabsKey::isFromEnvironment() ? "environment" : "keychain", "ElevenLabs takes the key.");
}

void forgetKey(Desk& desk) {
    bool wasThere = false;
    try {
        wasThere = elevenLabsKey::forget();
    } catch (KeychainError const& error) {
        fail(error);
    }
    report(desk, wasThere ? "forgotten" : "none",
           wasThere ? "The key is no longer in your keychain." : "There was no key in your keychain.");
}

}

void addVoices(CLI::App& app) {
    CommandGroup<Desk> group(app, "voices", "Lists the voices that can narrate a film, and keeps the ElevenLabs key",
                             show);
    auto& command = group.command();
    auto& desk = *group.desk();
    auto* const language =
        command.add_option("--language", desk.language, "only those that speak it, as en or en-GB")->check(notEmpty);
    auto* const output =
        command.add_option("-o,--output", desk.output, "the sound of --preview, F.wav")->check(soundFileProblem);
    auto* const previewed =
        command.add_option("--preview", desk.previewed, "write how the voice of that id sounds")->check(notEmpty);
    output->needs(previewed);
    previewed->needs(output)->excludes(language);
    addOverwriting(command, desk.ifTaken);
    command.add_flag("--all", desk.offersAll, "also the voices that ElevenLabs has for those with a key")
        ->excludes(previewed);
    group.addJSON("print them as JSON");
    auto* const key = command.add_subcommand("key", "Keeps the ElevenLabs API key in your keychain");
    key->require_subcommand(1)->fallthrough();
    auto const add = [&](char const* name, char const* help, void (*work)(Desk&)) {
        auto* const below = key->add_subcommand(name, help);
        below->fallthrough();
        below->callback([desk = group.desk(), work] { work(*desk); });
    };
    add("set", "Reads it from the terminal, unseen, or from standard input, and keeps it", setKey);
    add("check", "Asks ElevenLabs whether it takes the key", checkKey);
    add("forget", "Removes it from the keychain", forgetKey);
}

}
