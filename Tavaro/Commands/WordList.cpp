#include <Tavaro/Commands/WordList.h>

#include <Tavaro/Model/Operations/TranscriptListing.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

std::string lines(std::vector<ListedWord> const& words) {
    std::string text;
    for (auto const& word : words) {
        auto const shown = word.shownAt ? Timecode::format(*word.shownAt, Timecode::Fraction::hundredths) : "cut";
        text += fmt::format("{}{:5}  {:>10}  {}", text.empty() ? "" : "\n", word.number, shown, word.text);
    }
    return text;
}

EditReport listing(DemoProject const& project) {
    return {.operation = std::string(operations::DeleteWords::info.name),
            .summary = lines(listWords(project)),
            .durationBefore = project.duration(),
            .duration = project.duration()};
}

}

void offerWordList(CLI::App& command, std::shared_ptr<EditOptions> const& options,
                   std::shared_ptr<operations::DeleteWords> const& deletion) {
    auto const isWanted = std::make_shared<bool>(false);
    command.add_flag("--list", *isWanted, "list the words with their numbers instead");
    auto const* first = command.get_option("FROM")->required(false);
    command.callback([=] {
        if (first->count() > 0 && !*isWanted) return runEdit(*options, *deletion);
        auto const listed = listing(openProject(options->package).project);
        if (!*isWanted) throw CLI::RequiredError("FROM");
        print(listed, *options);
    });
}

}
