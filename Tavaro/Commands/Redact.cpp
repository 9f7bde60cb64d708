#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Edit.h>
#include <Tavaro/Commands/FindingTable.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/StoredProject.h>
#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace tavaro::commands {

namespace {

struct Options {
    EditOptions edit;
    std::vector<std::string> accepted;
    std::vector<std::string> rejected;
    std::vector<double> added; // from, to, x, y, width, height
    bool isBlurred = false;
    bool lists = false;
};

void list(Options const& options) {
    auto const findings = listedFindings(openProject(options.edit.package).project);
    if (options.edit.asJSON) return terminal::sayJSON(encodeJSON(findings));
    printFindings(findings);
    if (findings.empty()) terminal::say("Nothing is hidden. `tavaro scan` looks for private text.\n");
}

operations::HideArea areaOf(Options const& options) {
    auto const& at = options.added;
    return {.start = at[0],
            .end = at[1],
            .x = at[2],
            .y = at[3],
            .width = at[4],
            .height = at[5],
            .isBlurred = options.isBlurred};
}

/// The library's picture hides it, too.
void decide(Options const& options, Operation const& decision) {
    runEdit(options.edit, decision);
    auto const [package, project] = openProject(options.edit.package);
    writeThumbnail(package, project);
}

void redact(Options const& options) {
    if (!options.accepted.empty()) return decide(options, operations::AcceptFindings{options.accepted});
    if (!options.rejected.empty()) return decide(options, operations::RejectFindings{options.rejected});
    if (!options.added.empty()) return decide(options, areaOf(options));
    list(options);
}

}

void addRedact(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("redact", "Decides what the film hides; tells what it does without an option");
    command->add_option("PROJECT", options->edit.package, "the project, NAME.recproj")->required()->check(notEmpty);
    auto* const choice = command->add_option_group("change", "What to change");
    choice->add_option(
        "--accept", options->accepted,
        "hide what a scan found, and leave it so in later scans: ids as `--list` shows them, kinds, all");
    choice->add_option("--reject", options->rejected, "show it, also where later scans find it");
    auto* const add = choice
                          ->add_option("--add", options->added,
                                       "hide an area: from and to in seconds of the edit, then X,Y,W,H in pixels of "
                                       "the recording")
                          ->type_name("T0,T1,X,Y,W,H")
                          ->delimiter(',')
                          ->expected(6);
    choice->add_flag("--list", options->lists, "only tell what is hidden, and what was rejected");
    choice->require_option(0, 1);
    command->add_flag("--blur", options->isBlurred, "with --add: blur the area instead of covering it")->needs(add);
    command->add_flag("--json", options->edit.asJSON, "print the result as JSON");
    command->callback([options] { redact(*options); });
}

}
