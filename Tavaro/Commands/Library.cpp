#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Listings/LibraryListing.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/chrono.h>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

std::string size(std::int64_t bytes) {
    constexpr double kilo = 1000;
    auto const value = static_cast<double>(bytes);
    if (value < kilo * kilo) return fmt::format("{:.0f} kB", value / kilo);
    if (value < kilo * kilo * kilo) return fmt::format("{:.1f} MB", value / kilo / kilo);
    return fmt::format("{:.1f} GB", value / kilo / kilo / kilo);
}

void printLine(ListedProject const& item) {
    auto const modified = fmt::localtime(static_cast<std::time_t>(item.modified.milliseconds / 1000));
    if (item.problem) {
        terminal::say("{:%Y-%m-%d %H:%M}  {}\n", modified, *item.problem);
        return;
    }
    terminal::say("{:%Y-%m-%d %H:%M}  {:>8}  {:>8}  {:<11}  {}  {}\n", modified, Timecode::format(item.duration),
                  size(item.size), displayName(item.mode), item.name, item.path);
}

void print(std::vector<ListedProject> const& items) {
    for (auto const& item : items) printLine(item);
    if (items.empty()) terminal::say("There are no projects there.\n");
}

}

void addLibrary(CLI::App& app) {
    struct Options {
        std::vector<std::string> folders;
        bool asJSON = false;
    };
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("library", "Lists projects, the newest first");
    command->add_option("FOLDER", options->folders,
                        "where to look, and in the folders inside; else the current folder, Movies/Tavaro, and the "
                        "projects that were not saved anywhere yet");
    command->add_flag("--json", options->asJSON, "print the list as JSON");
    command->callback([options] {
        auto const folders = options->folders.empty()
                                 ? usualProjectFolders()
                                 : std::vector<fs::path>(options->folders.begin(), options->folders.end());
        auto const items = listProjects(folders);
        if (options->asJSON) terminal::sayJSON(encodeJSON(items));
        if (!options->asJSON) print(items);
        if (auto const offer = unfinishedOffer()) terminal::tell("{}\n", *offer);
    });
}

}
