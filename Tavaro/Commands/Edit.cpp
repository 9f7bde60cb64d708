#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/EditOperations.h>
#include <Tavaro/Model/NewProject.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

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

std::string time(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

void print(EditReport const& report) {
    if (report.durationBefore == report.duration) {
        fmt::print("{}\n", report.summary);
    } else {
        fmt::print("{}: {} → {}\n", report.summary, time(report.durationBefore), time(report.duration));
    }
}

}

void runEdit(EditOptions const& options, std::string const& operation, EditFunction const& apply) {
    ProjectPackage const package(packagePath(options.package));
    auto const before = package.load();
    auto project = before;
    auto const summary = apply(project);
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
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required();
    command->add_flag("--json", options->asJSON, "print what changed as JSON");
    command->require_subcommand(1);
    command->footer("Times are seconds of the edit, without its intro card.");
    addTimeOperations(*command, options);
    addSoundOperations(*command, options);
    addCleanUpOperations(*command, options);
}

}
