#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/EditDeclaration.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

/// What `--json` prints.
struct EditReport {
    std::string operation;
    std::string summary;
    bool isChanged = false;
    double durationBefore = 0;
    double duration = 0;

    static constexpr auto fields = std::tuple{
        field("operation", &EditReport::operation), field("summary", &EditReport::summary),
        field("isChanged", &EditReport::isChanged), field("durationBefore", &EditReport::durationBefore),
        field("duration", &EditReport::duration),
    };
};
static_assert(listsEveryField<EditReport>);

void print(EditReport const& report) {
    if (report.durationBefore == report.duration) {
        fmt::print("{}\n", report.summary);
    } else {
        fmt::print("{}: {} → {}\n", report.summary, shownTime(report.durationBefore), shownTime(report.duration));
    }
}

}

void runEdit(EditOptions const& options, std::string const& operation, EditFunction const& apply) {
    auto const lock = lockForEditing(options.package);
    auto const [package, before] = openProject(options.package);
    auto project = before;
    auto const summary = apply(project);
    if (project.timeline.clips.empty() && !before.timeline.clips.empty()) {
        throw Error("The edit would leave nothing of the video, and is not made.");
    }
    EditReport const report{.operation = operation,
                            .summary = summary,
                            .isChanged = !(project == before),
                            .durationBefore = before.duration(),
                            .duration = project.duration()};
    if (report.isChanged) {
        project.modifiedAt = Date::now();
        package.save(project);
    }
    if (options.asJSON) {
        fmt::print("{}\n", encodeJSON(report));
    } else {
        print(report);
    }
}

void addEdit(CLI::App& app) {
    auto options = std::make_shared<EditOptions>();
    auto* command = app.add_subcommand("edit", "Changes the edit; the save before it stays beside it as a backup");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_flag("--json", options->asJSON, "print what changed as JSON");
    command->require_subcommand(1);
    command->footer("Times are seconds of the edit, without its intro card.");
    addTimeOperations(*command, options);
    addSoundOperations(*command, options);
    addCleanUpOperations(*command, options);
    addTranscriptOperations(*command, options);
}

}
