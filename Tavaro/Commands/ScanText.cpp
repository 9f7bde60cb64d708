#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TextFile.h>

#include <TavaroPlatform/Folders/FindingKeyFile.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/TextEncoding.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Privacy/TextFindings.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

constexpr std::uint64_t largestText = 256 << 20; // bytes

enum class Form { lines, json };

struct Options {
    std::string file;
    std::vector<std::string> kinds;
    RedactionSettings settings;
    bool asJSON = false;
};

/// What is no text is refused rather than said to have nothing private in it.
std::string textOf(std::string const& file) {
    auto text = readText(file, Dash::isStandardInput, largestText);
    if (auto utf8 = utf8OfMarkedUTF16(text)) text = std::move(*utf8);
    if (text.find('\0') == text.npos) return text;
    auto const name = file == "-" ? std::string("the standard input") : fmt::format("“{}”", file);
    throw FileError(FileError::Kind::cannotRead,
                    fmt::format("Could not read {}: it has NUL bytes, so it is no text, or one in UTF-16 without the "
                                "byte order mark that says so.",
                                name));
}

/// Writes findings as they come: there may be millions.
class FindingList {
public:
    explicit FindingList(Form form) : form_(form) {}

    void add(TextFinding const& finding) {
        ++count_;
        if (form_ == Form::json) {
            terminal::sayPieceOfJSON((count_ == 1 ? "[" : ",") + encodeJSON(finding));
        } else {
            terminal::say("{}:{}  {}  {}\n", finding.line, finding.column, displayName(finding.kind), finding.masked);
        }
    }
    void end() const {
        if (form_ == Form::json) {
            terminal::sayJSON(count_ == 0 ? "[]" : "]");
        } else if (count_ == 0) {
            terminal::say("Nothing private was found.\n");
        }
    }

private:
    Form form_;
    std::size_t count_ = 0;
};

void scan(Options options) {
    if (!options.kinds.empty()) {
        options.settings.kinds.clear();
        for (auto const& name : options.kinds) options.settings.kinds.insert(enumNamed<SensitiveKind>(name).value());
    }
    SensitiveTextClassifier classifier(options.settings);
    auto const key = options.asJSON ? ensureFindingKey() : FindingKey{}; // only JSON has the hashes
    auto const text = textOf(options.file);
    FindingList list(options.asJSON ? Form::json : Form::lines);
    forEachFinding(text, classifier, key, [&](TextFinding const& finding) { list.add(finding); });
    list.end();
    for (auto const& warning : classifier.warnings()) terminal::tell("{}\n", warning);
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
