#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

struct PackOptions {
    std::string source;
    std::string output;
    PendingFile::IfTaken ifTaken = PendingFile::IfTaken::refuse;
    PackingRequest::Links links = PackingRequest::Links::insideOnly;
    PackingRequest::TypedText typedText = PackingRequest::TypedText::masked;
    bool asJSON = false;
};

struct RestoreOptions {
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
template<class Work> auto watched(char const* title, bool isSilent, Work const& work) {
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

/// Where nobody gave a name, another one will do as well.
PackingRequest requestOf(PackOptions const& options, fs::path const& package) {
    using enum PackingRequest::IfTaken;
    PackingRequest request{.links = options.links, .typedText = options.typedText};
    request.file = options.output.empty() ? fs::path(package).replace_extension(".zip") : fs::path(options.output);
    if (options.ifTaken == PendingFile::IfTaken::replace)
        request.ifTaken = replace;
    else
        request.ifTaken = options.output.empty() ? addNumber : refuse;
    return request;
}

/// What can be done about a failure, with the words of this program.
std::string_view remedyFor(ArchiveError::Kind kind) {
    switch (kind) {
    case ArchiveError::Kind::leadsOutside: return ". --follow-links packs what it leads to.";
    case ArchiveError::Kind::damagedDocument: return ". --with-typed-text packs it as it is.";
    default: return "";
    }
}

PackedProject packed(PackOptions const& options) {
    auto const package = packagePath(options.source);
    auto const request = requestOf(options, package);
    if (request.ifTaken == PackingRequest::IfTaken::refuse) expectWritable(request.file, options.ifTaken);
    try {
        return watched("Packing", options.asJSON,
                       [&](ArchiveWatch proceed) { return archiveProject(ProjectPackage(package), request, proceed); });
    } catch (ArchiveError const& error) {
        if (error.kind == ArchiveError::Kind::nameTaken) expectWritable(request.file, options.ifTaken);
        throw ArchiveError(error.kind, fmt::format("{}{}", error.what(), remedyFor(error.kind)));
    }
}

void archive(PackOptions const& options) {
    auto const made = packed(options);
    for (auto const& remark : made.remarks) terminal::tell("{}\n", remark);
    printPath(made.file, options.asJSON);
}

void unpack(RestoreOptions const& options) {
    auto const made = watched("Unpacking", options.asJSON, [&](ArchiveWatch proceed) {
        return unpackProject(options.source, options.output.empty() ? "." : options.output, proceed);
    });
    if (made.problem) {
        bool const hasBackup = fs::exists(ProjectPackage(made.package).backupFileURL());
        terminal::tell("{}{}\n", *made.problem,
                       hasBackup ? " `tavaro restore` with it goes back to its previous save." : "");
    }
    printPath(made.package, options.asJSON);
}

/// A project may be named without its ending; an archive may be missing.
bool isArchive(std::string const& source) {
    std::error_code ignored;
    if (fs::exists(source, ignored)) return !fs::is_directory(source, ignored);
    return endingOf(source) == ".zip" && !fs::exists(packagePath(source), ignored);
}

void restore(RestoreOptions const& options) {
    if (isArchive(options.source)) return unpack(options);
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
    auto options = std::make_shared<PackOptions>();
    auto* command = app.add_subcommand("archive", "Packs a project into one zip file, for sharing");
    command->add_option("PROJECT", options->source, "the project, NAME.recproj")->required();
    command->add_option("-o,--output", options->output,
                        "the file to write, else NAME.zip beside the project, with a number added where that is taken");
    addOverwriting(*command, options->ifTaken);
    command->add_flag_callback(
        "--follow-links", [options] { options->links = PackingRequest::Links::followed; },
        "also pack what links of the project lead to outside of it; else they are refused");
    command->add_flag_callback(
        "--with-typed-text", [options] { options->typedText = PackingRequest::TypedText::kept; },
        "leave in what the log says was typed; else each such key reads •");
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { archive(*options); });
}

void addRestore(CLI::App& app) {
    auto options = std::make_shared<RestoreOptions>();
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
