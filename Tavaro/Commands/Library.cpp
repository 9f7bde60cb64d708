#include <Tavaro/Commands/Command.h>

#include <TavaroCore/Library/ProjectLibrary.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/JSONWriter.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <CLI/CLI.hpp>
#include <fmt/chrono.h>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

/// Where projects are when nobody says: the current folder, the films of the user, and what was never put anywhere.
std::vector<fs::path> usualFolders() {
    std::vector<fs::path> folders;
    std::error_code code;
    for (auto const& folder : {fs::current_path(code), folders::movies() / "Tavaro", folders::unsavedProjects()}) {
        if (fs::is_directory(folder, code)) folders.push_back(folder);
    }
    return folders;
}

std::string size(std::int64_t bytes) {
    constexpr double kilo = 1000;
    auto const value = static_cast<double>(bytes);
    if (value < kilo * kilo) return fmt::format("{:.0f} kB", value / kilo);
    if (value < kilo * kilo * kilo) return fmt::format("{:.1f} MB", value / kilo / kilo);
    return fmt::format("{:.1f} GB", value / kilo / kilo / kilo);
}

void printLine(LibraryItem const& item) {
    auto const modified = fmt::localtime(static_cast<std::time_t>(item.modified.milliseconds / 1000));
    if (item.problem) {
        fmt::print("{:%Y-%m-%d %H:%M}  {}\n", modified, *item.problem);
        return;
    }
    fmt::print("{:%Y-%m-%d %H:%M}  {:>8}  {:>8}  {:<11}  {}  {}\n", modified, Timecode::format(item.duration),
               size(item.size), displayName(item.mode), item.name, item.path.string());
}

void writeItem(JSONWriter& writer, LibraryItem const& item) {
    auto const text = [&](std::string_view key, std::string_view value) {
        writer.key(key);
        writer.string(value);
    };
    writer.beginObject();
    writer.key("duration");
    writer.number(item.duration);
    text("mode", nameOf(item.mode));
    text("modified", item.modified.text());
    text("name", item.name);
    text("path", item.path.string());
    if (item.problem) text("problem", *item.problem);
    writer.key("size");
    writer.integer(item.size);
    if (item.thumbnail) text("thumbnail", item.thumbnail->string());
    writer.endObject();
}

void printJSON(std::vector<LibraryItem> const& items) {
    JSONWriter writer;
    writer.beginArray();
    for (auto const& item : items) writeItem(writer, item);
    writer.endArray();
    fmt::print("{}\n", writer.take());
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
                                 ? usualFolders()
                                 : std::vector<fs::path>(options->folders.begin(), options->folders.end());
        auto const items = ProjectLibrary(folders::caches() / "library.json").list(folders);
        if (options->asJSON) return printJSON(items);
        for (auto const& item : items) printLine(item);
        if (items.empty()) fmt::print("There are no projects there.\n");
    });
}

}
