#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

struct Options {
    std::string source;
    std::string output;
    bool asJSON = false;
};

/// What the commands print for programs.
struct MadeFile {
    std::string path;

    static constexpr auto fields = std::tuple{field("path", &MadeFile::path)};
};
static_assert(listsEveryField<MadeFile>);

/// Runs the work with a line that tells how far it is, until it is done or Ctrl-C is pressed.
template<class Work> fs::path watched(char const* title, bool isSilent, Work const& work) {
    Interruption const interruption;
    ProgressLine line(title, isSilent ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    return work([&](ArchiveProgress const& progress) {
        constexpr double mega = 1e6;
        auto const done = static_cast<double>(progress.bytesDone), total = static_cast<double>(progress.bytesTotal);
        if (total > 0)
            line.text(fmt::format("{:3.0f} %  {:.0f} of {:.0f} MB", 100 * done / total, done / mega, total / mega));
        return !interruption.isRequested();
    });
}

void printPath(fs::path const& path, bool asJSON) {
    if (asJSON)
        terminal::sayJSON(encodeJSON(MadeFile{path.string()}));
    else
        terminal::sayPath(path.string());
}

void archive(Options const& options) {
    auto const package = packagePath(options.source);
    auto const target =
        unusedFile(options.output.empty() ? fs::path(package).replace_extension(".zip") : fs::path(options.output));
    printPath(watched("Packing", options.asJSON,
                      [&](ArchiveWatch proceed) {
                          archiveProject(ProjectPackage(package), target, proceed);
                          return target;
                      }),
              options.asJSON);
}

void unpack(Options const& options) {
    printPath(watched("Unpacking", options.asJSON,
                      [&](ArchiveWatch proceed) {
                          return unpackProject(options.source, options.output.empty() ? "." : options.output, proceed);
                      }),
              options.asJSON);
}

void restore(Options const& options) {
    if (fs::is_regular_file(options.source)) return unpack(options);
    if (!options.output.empty()) {
        throw CLI::ValidationError("--output", "is where an archive is unpacked; a project goes back to its previous "
                                               "save in its own place");
    }
    auto const package = packagePath(options.source);
    auto const lock = lockForEditing(package);
    auto const project = ProjectPackage(package).restoreBackup();
    if (!options.asJSON)
        terminal::say("“{}” is as it was before its last save; the same command goes forward again.\n", project.name);
    if (options.asJSON) printPath(package, true);
}

}

void addArchive(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("archive", "Packs a project into one zip file, for sharing");
    command->add_option("PROJECT", options->source, "the project, NAME.recproj")->required();
    command->add_option(
        "-o,--output", options->output,
        "the file to write, else NAME.zip beside the project; never overwrites, a number is added instead");
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { archive(*options); });
}

void addRestore(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command =
        app.add_subcommand("restore", "Unpacks an archived project, or takes a project back to its previous save");
    command
        ->add_option(
            "SOURCE", options->source,
            "a zip file made by `tavaro archive`, or a project, whose present state then becomes its previous save")
        ->required();
    command->add_option("-o,--output", options->output, "the folder for the unpacked project; else the current one");
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { restore(*options); });
}

}
