#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TextFile.h>

#include <TavaroPlatform/Folders/FindingKeyFile.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Privacy/TextFindings.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

constexpr std::uint64_t largestText = 256 << 20; // bytes

struct Options {
    std::string file;
    std::vector<std::string> kinds;
    RedactionSettings settings;
    bool asJSON = false;
};

void scan(Options options) {
    if (!options.kinds.empty()) {
        options.settings.kinds.clear();
        for (auto const& name : options.kinds) options.settings.kinds.insert(enumNamed<SensitiveKind>(name).value());
    }
    SensitiveTextClassifier classifier(options.settings);
    auto const key = options.asJSON ? ensureFindingKey() : FindingKey{}; // only JSON has the hashes
    auto const findings = findingsIn(readText(options.file, Dash::isStandardInput, largestText), classifier, key);
    for (auto const& warning : classifier.warnings()) terminal::tell("{}\n", warning);
    if (options.asJSON) {
        terminal::sayJSON(encodeJSON(findings));
        return;
    }
    for (auto const& finding : findings) {
        terminal::say("{}:{}  {}  {}\n", finding.line, finding.column, displayName(finding.kind), finding.masked);
    }
    if (findings.empty()) terminal::say("Nothing private was found.\n");
}

}

void addScanText(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("scan-text", "Finds what is private in a text; values are shown masked");
    command->add_option("FILE", options->file, "the text, a line at a time; - is standard input")->required();
    command->add_option("--kinds", options->kinds, "look for these only")
        ->delimiter(',')
        ->check(isNameOf<SensitiveKind>());
    command->add_option("--word", options->settings.customWords, "a word of your own to find; may be repeated")
        ->allow_extra_args(false);
    command
        ->add_option("--pattern", options->settings.customPatterns, "a regular expression of your own; may be repeated")
        ->allow_extra_args(false);
    command->add_flag("--json", options->asJSON, "print the findings as JSON");
    command->callback([options] { scan(*options); });
}

}
