#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/Take.h>
#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>

namespace tavaro::commands {

namespace {

struct Options {
    std::string id;
    bool discards = false;
    bool isRaw = false;
    bool asJSON = false;
    std::string mode = "website";
    std::string output;
};

using Recoverable = RecoveryStore::Recoverable;

/// An unfinished recording as it is printed for programs.
struct Listed {
    UUID id;
    Date startedAt;
    double estimatedDuration = 0; // seconds
    std::string mode;

    static constexpr auto fields = std::tuple{
        field("id", &Listed::id),
        field("startedAt", &Listed::startedAt),
        field("estimatedDuration", &Listed::estimatedDuration),
        field("mode", &Listed::mode),
    };
};

void printJSON(std::vector<Recoverable> const& takes) {
    std::vector<Listed> listed;
    for (auto const& take : takes) {
        listed.push_back({take.id, take.marker.startedAt, take.estimatedDuration, take.marker.mode});
    }
    fmt::print("{}\n", encodeJSON(listed));
}

/// "Recovered 2026-03-01 at 09.30.15", by the clock on the wall.
std::string nameOf(Recoverable const& take) {
    auto const seconds = static_cast<std::time_t>(take.marker.startedAt.milliseconds / 1000);
    return fmt::format("Recovered {:%Y-%m-%d at %H.%M.%S}", fmt::localtime(seconds));
}

void list(std::vector<Recoverable> const& takes) {
    if (takes.empty()) fmt::print("There is no unfinished recording.\n");
    for (auto const& take : takes) {
        fmt::print("{}  {}  {}  ({})\n", take.id.text(), take.marker.startedAt.text(),
                   Timecode::format(take.estimatedDuration), take.marker.mode);
    }
}

Recoverable const& chosen(std::vector<Recoverable> const& takes, std::string const& id) {
    auto const found = std::find_if(takes.begin(), takes.end(),
                                    [&](Recoverable const& take) { return id == "last" || take.id.text() == id; });
    if (found == takes.end()) {
        throw CaptureError(CaptureError::Kind::recoveryFailed,
                           fmt::format("There is no unfinished recording “{}”.", id));
    }
    return *found;
}

void recover(Options const& options) {
    auto const takes = RecoveryStore::findRecoverable();
    if (options.id.empty()) return options.asJSON ? printJSON(takes) : list(takes);
    auto const& take = chosen(takes, options.id);
    if (options.discards) return RecoveryStore::discard(take);
    auto const package = packagePath(options.output.empty() ? nameOf(take) : options.output);
    expectPlaceFor(package);
    auto const recovered = RecoveryStore::recover(take);
    saveTake({recovered.movie, recovered.metadata, recovered.duration, recovered.streams, recovered.warnings}, package,
             modeNamed(options.mode), options.isRaw ? FirstEdit::raw : FirstEdit::polished,
             options.asJSON ? TakeOutput::json : TakeOutput::lines);
}

}

void addRecover(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("recover", "Lists unfinished recordings, or brings one back as a project");
    command->add_option("ID", options->id, "the recording to bring back, or “last”; without it they are listed");
    command->add_flag("--discard", options->discards, "remove it instead");
    command->add_option("--mode", options->mode, "what kind of demo it is")->check(modeNames())->capture_default_str();
    command->add_flag("--no-polish", options->isRaw, "leave the take as it was recorded");
    command->add_option("-o,--output", options->output, "the project to make, NAME.recproj")->check(notEmpty);
    command->add_flag("--json", options->asJSON, "print the list, or what was made, as JSON");
    command->callback([options] { recover(*options); });
}

}
