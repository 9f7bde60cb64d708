#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Names.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Privacy/SensitiveText.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <iostream>
#include <iterator>

namespace tavaro::commands {

namespace {

constexpr std::uint64_t largestText = 256 << 20; // bytes

struct Options {
    std::string file;
    std::vector<std::string> kinds;
    RedactionSettings settings;
    bool asJSON = false;
};

/// One finding as it is printed: never its value.
struct Finding {
    std::int64_t line = 0;   // from 1
    std::int64_t column = 0; // in bytes, from 1
    std::int64_t length = 0; // in bytes
    SensitiveKind kind = SensitiveKind::custom;
    std::string label;
    std::string masked;
    std::string textHash;

    static constexpr auto fields = std::tuple{
        field("line", &Finding::line),         field("column", &Finding::column), field("length", &Finding::length),
        field("kind", &Finding::kind),         field("label", &Finding::label),   field("masked", &Finding::masked),
        field("textHash", &Finding::textHash),
    };
};

/// Its first character, and how long it is.
std::string masked(std::string_view value) {
    std::size_t first = 1;
    while (first < value.size() && (value[first] & 0xC0) == 0x80) ++first;
    return fmt::format("{}•••••• ({} bytes)", value.substr(0, first), value.size());
}

std::string textOf(std::string const& file) {
    if (file == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    if (auto text = readWholeFile(file, largestText)) return std::move(*text);
    throw FileError(FileError::Kind::cannotRead, fmt::format("There is no file “{}”.", file));
}

std::vector<Finding> findingsIn(std::string_view text, SensitiveTextClassifier& classifier) {
    std::vector<Finding> findings;
    for (std::int64_t number = 1; !text.empty(); ++number) {
        auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        for (auto const& match : classifier.matches(line)) {
            auto const value = line.substr(match.start, match.length);
            findings.push_back({number, static_cast<std::int64_t>(match.start) + 1,
                                static_cast<std::int64_t>(match.length), match.kind, match.label, masked(value),
                                SensitiveText::hash(value)});
        }
    }
    return findings;
}

void scan(Options options) {
    if (!options.kinds.empty()) {
        options.settings.kinds.clear();
        for (auto const& name : options.kinds) options.settings.kinds.insert(enumNamed<SensitiveKind>(name).value());
    }
    SensitiveTextClassifier classifier(options.settings);
    auto const findings = findingsIn(textOf(options.file), classifier);
    for (auto const& warning : classifier.warnings()) fmt::print(stderr, "{}\n", warning);
    if (options.asJSON) {
        fmt::print("{}\n", encodeJSON(findings));
        return;
    }
    for (auto const& finding : findings) {
        fmt::print("{}:{}  {}  {}\n", finding.line, finding.column, displayName(finding.kind), finding.masked);
    }
    if (findings.empty()) fmt::print("Nothing private was found.\n");
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
