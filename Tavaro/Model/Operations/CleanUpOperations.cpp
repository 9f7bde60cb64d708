#include <Tavaro/Model/Operations/CleanUpOperations.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Editing/SilenceRemoval.h>
#include <TavaroCore/Editing/TypingSpeed.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

namespace tavaro::operations {

namespace {

std::string counted(int count, std::string_view noun) {
    return operations::counted(static_cast<std::size_t>(count), noun);
}

[[noreturn]] void fail(std::string const& sentence) {
    throw OperationError(OperationError::Kind::notPossible, sentence);
}

std::vector<UUID> chosenWords(std::vector<TranscriptWord> const& words, std::size_t first, std::size_t last) {
    if (first > last) fail(fmt::format("The words have to be named in order: {} is behind {}.", first, last));
    if (words.empty()) fail("The transcript has no words.");
    if (last >= words.size())
        fail(fmt::format("There is no word {}: the words are numbered 0 to {}.", last, words.size() - 1));
    std::vector<UUID> chosen;
    for (std::size_t i = first; i <= last; ++i) chosen.push_back(words[i].id);
    return chosen;
}

}

std::string apply(DemoProject& project, RemoveSilence const&) {
    auto const removed = removeAllSilence(project);
    return removed.count == 0 ? "There is no silence to remove" : "Removed " + counted(removed.count, "silence");
}

std::string apply(DemoProject& project, SpeedUpTyping const& change) {
    auto const done = speedUpTyping(project, change.rate);
    if (done.count == 0) return "There is no typing to speed up";
    return fmt::format("Sped up typing {:g} times in {}", change.rate, counted(done.count, "place"));
}

std::string apply(DemoProject& project, TightenPauses const& tightening) {
    wordsOf(project);
    auto const cut = tightenPauses(project, {.threshold = tightening.threshold, .keep = tightening.keep});
    return cut.count == 0 ? "There is no pause to tighten" : "Tightened " + operations::counted(cut.count, "pause");
}

std::string apply(DemoProject& project, RemoveFillers const&) {
    wordsOf(project);
    auto const cut = removeFillers(project);
    if (cut.count == 0) return "There is no filler word to remove";
    return "Removed " + operations::counted(cut.count, "filler word");
}

std::string apply(DemoProject& project, DeleteWords const& deletion) {
    auto const chosen = chosenWords(wordsOf(project), deletion.first, deletion.last.value_or(deletion.first));
    auto const cut = deleteWords(project, chosen);
    if (cut.count == 0) return "The edit shows none of these words";
    return "Deleted " + operations::counted(cut.count, "word");
}

}
