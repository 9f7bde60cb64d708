#include <Tavaro/Commands/Edit.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Command.h>
#include <Tavaro/Commands/OperationFlags.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/WordList.h>
#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

std::string shownTime(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

template<class Record> void declareOperation(CLI::App& edit, std::shared_ptr<EditOptions> const& options) {
    auto* command = edit.add_subcommand(std::string(Record::info.name), std::string(Record::info.help));
    command->fallthrough();
    auto const operation = std::make_shared<Record>();
    declareParameters(*command, *operation);
    command->callback([=] { runEdit(*options, *operation); });
    if constexpr (std::is_same_v<Record, operations::DeleteWords>) offerWordList(*command, options, operation);
}

}

void print(EditReport const& report, EditOptions const& options) {
    if (options.asJSON) {
        terminal::sayJSON(encodeJSON(report));
    } else if (report.durationBefore == report.duration) {
        terminal::say("{}\n", report.summary);
    } else {
        terminal::say("{}: {} → {}\n", report.summary, shownTime(report.durationBefore), shownTime(report.duration));
    }
}

void runEdit(EditOptions const& options, Operation const& operation) {
    OpenProject open(options.package, LockHolding::whileOpen);
    EditReport report;
    try {
        open.commit(infoOf(operation).title,
                    [&](DemoProject& project) { report = perform(project, operation, open.package()); });
    } catch (OperationError const& error) {
        throw Error(error.withoutTools);
    }
    print(report, options);
}

void addEdit(CLI::App& app) {
    auto options = std::make_shared<EditOptions>();
    auto* command = app.add_subcommand("edit", "Changes the edit; the save before it stays beside it as a backup");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_flag("--json", options->asJSON, "print what changed as JSON");
    command->require_subcommand(1);
    command->footer("Times are seconds of the edit, without its intro card.");
    forEachOperation([&]<class Record>(std::type_identity<Record>) {
        if constexpr (Record::info.command == OperationCommand::edit) declareOperation<Record>(*command, options);
    });
}

}
