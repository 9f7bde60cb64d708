#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/OperationFlags.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TextFile.h>
#include <Tavaro/Model/Operations/Perform.h>
#include <Tavaro/Model/Operations/ScriptListing.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroVoice/Script/ScriptPlan.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

constexpr std::uint64_t mostBytes = 4 << 20; // a book

struct Options {
    std::string package;
    operations::DraftScript drafting;
    bool draftsAnew = false;
    std::string from; // a file
    std::string output;
    PendingFile::IfTaken ifTaken = PendingFile::IfTaken::refuse;
    bool asJSON = false;
};

bool hasScript(DemoProject const& project) { return project.voiceover && !project.voiceover->segments.empty(); }

std::string textOf(DemoProject const& project) {
    return scriptText(linesOf(project.voiceover.value_or(VoiceoverPlan{})));
}

Operation operationOf(Options const& options) {
    if (options.from.empty()) return options.drafting;
    auto const name = options.from == "-" ? "standard input" : options.from;
    return operations::SetScript{.script = readText(options.from, Dash::isStandardInput, mostBytes), .file = name};
}

/// Makes it; a file that cannot be written leaves the project as it is. Says what was made.
std::string made(OpenProject& open, Options const& options) {
    auto const operation = operationOf(options);
    std::string summary;
    open.commit(infoOf(operation).title, [&](DemoProject& project) {
        summary = perform(project, operation).summary;
        if (!options.output.empty()) writeFileAtomically(options.output, textOf(project), options.ifTaken);
    });
    return summary;
}

void printJSON(DemoProject const& project, Options const& options) {
    auto const& lines = project.voiceover->segments;
    ScriptListing listing{.count = static_cast<std::int64_t>(lines.size()), .lines = lines, .text = textOf(project)};
    if (!options.output.empty()) listing.path = options.output;
    terminal::sayJSON(encodeJSON(listing));
}

void script(Options const& options) {
    if (!options.output.empty()) expectWritable(options.output, options.ifTaken);
    OpenProject open(options.package, LockHolding::whileOpen);
    bool const makes = options.draftsAnew || !options.from.empty() || !hasScript(open.document());
    auto const summary = makes ? made(open, options) : "";
    auto const text = textOf(open.document());
    if (!makes && !options.output.empty()) writeFileAtomically(options.output, text, options.ifTaken);
    if (options.asJSON) return printJSON(open.document(), options);
    // What is printed is the script alone, to be kept in a file.
    if (makes) terminal::tell("{}\n", summary);
    if (!makes && options.output.empty()) terminal::tell("The project's script; --draft makes another one.\n");
    if (options.output.empty())
        terminal::say("{}", terminal::Lines{text});
    else
        terminal::say("Wrote {} to {}\n", counted(open.document().voiceover->segments.size(), "line"), options.output);
}

}

void addScript(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("script", "Drafts the script of a voice-over, shows it and takes one");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    auto* style = declareMember(*command, options->drafting, &operations::DraftScript::style);
    auto* product = declareMember(*command, options->drafting, &operations::DraftScript::productName);
    auto* draft = command->add_flag("--draft", options->draftsAnew, "draft another one in place of the project's");
    auto* from =
        command->add_option("--from", options->from, std::string(operations::SetScript::info.help))->check(notEmpty);
    from->excludes(style)->excludes(product)->excludes(draft);
    command->add_option("-o,--output", options->output, "write it to that file")->check(notEmpty);
    addOverwriting(*command, options->ifTaken);
    command->add_flag("--json", options->asJSON, "print the script as JSON");
    command->footer(
        "Without a script the project gets one that is drafted from what happens in the film. Each line is\n"
        "printed with its time, in seconds of the edit, and --from reads it so; - is standard input.");
    command->callback([=] {
        options->draftsAnew = options->draftsAnew || style->count() + product->count() > 0;
        script(*options);
    });
}

}
