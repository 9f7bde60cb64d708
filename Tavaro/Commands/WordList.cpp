#include <Tavaro/Commands/WordList.h>

#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Operations/TranscriptListing.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tavaro::commands {

namespace {

std::string line(ListedWord const& word) {
    auto const shown = word.shownAt ? Timecode::format(*word.shownAt, Timecode::Fraction::hundredths) : "cut";
    return fmt::format("{:5}  {:>10}  {}", word.number, shown, word.text);
}

void list(DemoProject const& project, EditOptions const& options) {
    auto const words = listWords(project);
    std::vector<std::string> lines(words.size());
    std::transform(words.begin(), words.end(), lines.begin(), line);
    if (!options.asJSON) {
        for (auto const& each : lines) terminal::say("{}\n", each);
        return;
    }
    print({.operation = std::string(operations::DeleteWords::info.name),
           .summary = fmt::format("{}", fmt::join(lines, "\n")),
           .durationBefore = project.duration(),
           .duration = project.duration()},
          options);
}

}

void offerWordList(CLI::App& command, std::shared_ptr<EditOptions> const& options,
                   std::shared_ptr<operations::DeleteWords> const& deletion) {
    auto const isWanted = std::make_shared<bool>(false);
    command.add_flag("--list", *isWanted, "list the words with their numbers instead");
    auto const* first = command.get_option("FROM")->required(false);
    command.callback([=] {
        if (first->count() > 0 && !*isWanted) return runEdit(*options, *deletion);
        auto const project = openProject(options->package).project;
        if (!*isWanted) throw CLI::RequiredError("FROM");
        list(project, *options);
    });
}

}
