#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/MadeProject.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Model/Making/NewProject.h>
#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

struct Options {
    std::string movie;
    std::string events;
    std::string mode = "website";
    std::string output;
    bool asJSON = false;
};

RecordingMetadata readEvents(std::string const& file) {
    auto const text = readWholeFile(file);
    if (!text) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not read the events “{}”: there is no such file.", file));
    }
    try {
        return decodeJSON<RecordingMetadata>(*text);
    } catch (JSONError const& error) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not read the events “{}”: {}.", file, error.what()));
    }
}

void import(Options const& options) {
    auto const package = packagePath(options.output);
    expectPlaceFor(package);
    auto const metadata = options.events.empty() ? RecordingMetadata{} : readEvents(options.events);
    auto const project = createProject(
        ProjectPackage(package), {.movie = options.movie,
                                  .importMode = ImportMode::copy,
                                  .metadata = metadata,
                                  .mode = modeNamed(options.mode),
                                  .remark = [](std::string const& remark) { fmt::print(stderr, "{}\n", remark); }});
    if (options.asJSON) {
        MadeProject const made{.path = package.string(),
                               .duration = project.duration(),
                               .sourceSize = project.sourceSize,
                               .clicks = static_cast<std::int64_t>(metadata.clicks.size()),
                               .keystrokes = static_cast<std::int64_t>(metadata.keystrokes.size())};
        fmt::print("{}\n", encodeJSON(made));
        return;
    }
    fmt::print("{} of {}×{}, {}, {}\n{}\n", Timecode::format(project.duration(), Timecode::Fraction::hundredths),
               project.sourceSize.width, project.sourceSize.height, counted(metadata.clicks.size(), "click"),
               counted(metadata.keystrokes.size(), "key"), package.string());
}

}

void addImport(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("import", "Makes a project of any movie");
    command->add_option("MOVIE", options->movie, "the movie to bring in")->required();
    command->add_option("--events", options->events, "a JSON log of what happened: clicks, keystrokes, cursorSamples");
    command->add_option("--mode", options->mode, "what kind of demo it is")->check(modeNames())->capture_default_str();
    command->add_option("-o,--output", options->output, "the project to make, NAME.recproj")
        ->required()
        ->check(notEmpty);
    command->add_flag("--json", options->asJSON, "print what was made as JSON");
    command->callback([options] { import(*options); });
}

}
