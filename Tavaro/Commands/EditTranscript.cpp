#include <Tavaro/Commands/EditOperations.h>

#include <Tavaro/Commands/EditDeclaration.h>
#include <Tavaro/Commands/Names.h>

#include <TavaroCore/Editing/TranscriptEdits.h>
#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/TimelineWords.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <map>
#include <vector>

namespace tavaro::commands {

namespace {

std::vector<TranscriptWord> const& wordsOf(DemoProject const& project) {
    if (!project.transcript) throw Error("This project has no transcript yet.");
    return (*project.transcript)->words;
}

std::string tightenPauses(DemoProject& project, EditArguments const& arguments) {
    wordsOf(project);
    auto const cut = tavaro::tightenPauses(project, {.threshold = arguments.amount, .keep = arguments.kept});
    return cut.count == 0 ? "There is no pause to tighten" : "Tightened " + counted(cut.count, "pause");
}

std::string removeFillers(DemoProject& project, EditArguments const&) {
    wordsOf(project);
    auto const cut = tavaro::removeFillers(project);
    return cut.count == 0 ? "There is no filler word to remove" : "Removed " + counted(cut.count, "filler word");
}

/// The words with the numbers that `delete-words` takes, and when the edit shows them.
std::string listed(DemoProject const& project) {
    std::map<std::size_t, double> shownAt;
    for (auto const& word : timelineWords(project)) shownAt[word.index] = word.range.start;
    std::string text;
    auto const& words = wordsOf(project);
    for (std::size_t i = 0; i < words.size(); ++i) {
        auto const shown = shownAt.find(i);
        text += fmt::format("{}{:5}  {:>10}  {}", i > 0 ? "\n" : "", i,
                            shown == shownAt.end() ? "cut" : shownTime(shown->second), words[i].text);
    }
    return text;
}

std::string deleteWords(DemoProject& project, EditArguments const& arguments) {
    auto const& words = wordsOf(project);
    if (arguments.isSwitched) return listed(project);
    if (!arguments.first) throw CLI::RequiredError("FROM");
    std::size_t const first = *arguments.first, last = arguments.last.value_or(first);
    if (first > last) throw Error(fmt::format("The words have to be named in order: {} is behind {}.", first, last));
    if (last >= words.size()) {
        throw Error(words.empty()
                        ? "The transcript has no words."
                        : fmt::format("There is no word {}: the words are numbered 0 to {}.", last, words.size() - 1));
    }
    std::vector<UUID> chosen;
    for (std::size_t i = first; i <= last; ++i) chosen.push_back(words[i].id);
    auto const cut = tavaro::deleteWords(project, chosen);
    return cut.count == 0 ? "The edit shows none of these words" : "Deleted " + counted(cut.count, "word");
}

}

void addTranscriptOperations(CLI::App& edit, SharedEditOptions const& options) {
    auto pauses = declareEdit(edit, options, "tighten-pauses", "Shortens the long pauses between words", tightenPauses);
    PauseTightening const usual;
    pauses.arguments->amount = usual.threshold;
    pauses.arguments->kept = usual.keep;
    pauses.command->add_option("--threshold", pauses.arguments->amount, "seconds from which on a pause is long; 0.6")
        ->check(secondsFrom(0, 3600));
    pauses.command->add_option("--keep", pauses.arguments->kept, "seconds that stay of each; 0.25")
        ->check(secondsFrom(0, 3600));

    declareEdit(edit, options, "remove-fillers", "Takes out um, uh and their like", removeFillers);

    auto words = declareEdit(edit, options, "delete-words", "Takes words out with their picture", deleteWords);
    words.command->add_option("FROM", words.arguments->first, "number of the first word, from 0");
    words.command->add_option("TO", words.arguments->last, "number of the last word; only one word unless told");
    words.command->add_flag("--list", words.arguments->isSwitched, "list the words with their numbers instead");
}

}
