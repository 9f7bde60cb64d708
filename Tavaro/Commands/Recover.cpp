#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/MadeTakeText.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/PrivacyScanRun.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Recording/TakeNames.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <ctime>

namespace tavaro::commands {

namespace {

struct Options {
    std::string id;
    bool discards = false;
    bool isRaw = false;
    bool hidesSecrets = false;
    bool asJSON = false;
    std::string mode = "website";
    std::string output;
};

/// What is printed for programs of one that was removed.
struct DiscardedRecording {
    UnfinishedRecording discarded;

    static constexpr auto fields = std::tuple{field("discarded", &DiscardedRecording::discarded)};
};
static_assert(listsEveryField<DiscardedRecording>);

void list(std::vector<UnfinishedRecording> const& recordings) {
    if (recordings.empty()) terminal::say("There is no unfinished recording.\n");
    for (auto const& recording : recordings) {
        terminal::say("{}  {}  {}  ({})\n", recording.id.text(), recording.startedAt.text(),
                      Timecode::format(recording.estimatedDuration), recording.mode);
    }
}

void discard(RecoveryStore::Recoverable const& take, bool asJSON) {
    RecoveryStore::discard(take);
    auto const recording = listed(take);
    if (asJSON)
        terminal::sayJSON(encodeJSON(DiscardedRecording{recording}));
    else
        terminal::say("Discarded the recording of {}, which was {} long. Its files are removed.\n",
                      recording.startedAt.text(), Timecode::format(recording.estimatedDuration));
}

TakeProject projectFor(Options const& options, Date startedAt) {
    auto const name = recoveredName(static_cast<std::time_t>(startedAt.milliseconds / 1000));
    return {.package = packagePath(options.output.empty() ? name : options.output),
            .mode = modeNamed(options.mode),
            .firstEdit = options.isRaw ? FirstEdit::raw : FirstEdit::polished,
            .isScanDue = isScanWanted(options.hidesSecrets)};
}

void recover(Options const& options) {
    if (options.id.empty()) {
        auto const recordings = unfinishedRecordings();
        if (!options.asJSON) return list(recordings);
        terminal::sayJSON(encodeJSON(recordings));
        return;
    }
    auto const take = unfinishedRecording(options.id);
    if (options.discards) return discard(take, options.asJSON);
    MainQueue queue;
    auto job = recoveryJob(queue, take, projectFor(options, take.marker.startedAt));
    job.onRemark([](std::string const& remark) { terminal::tell("{}\n", remark); });
    job.start();
    auto const output = options.asJSON ? TakeOutput::json : TakeOutput::lines;
    auto const& made = job.wait();
    bool const isLookedAt = hideInNewTake(made.made.path, output);
    print(made, output);
    if (!isLookedAt && options.hidesSecrets) throw Error("The take may show private text.");
}

}

void addRecover(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("recover", "Lists unfinished recordings, or brings one back as a project");
    command->add_option("ID", options->id, "the recording to bring back, or “last”; without it they are listed");
    command->add_flag("--discard", options->discards, "remove it instead");
    command->add_option("--mode", options->mode, "what kind of demo it is")->check(modeNames())->capture_default_str();
    command->add_flag("--no-polish", options->isRaw, "leave the take as it was recorded");
    command->add_flag("--hide-secrets", options->hidesSecrets,
                      "look for private text in it when it is brought back, and hide it");
    command->add_option("-o,--output", options->output, "the project to make, NAME.recproj")->check(projectName);
    command->add_flag("--json", options->asJSON, "print the list, or what was made, as JSON");
    command->callback([options] { recover(*options); });
}

}
