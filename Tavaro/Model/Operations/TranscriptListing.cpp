#include <Tavaro/Model/Operations/TranscriptListing.h>

#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/TimelineWords.h>

namespace tavaro {

std::vector<ListedWord> listWords(DemoProject const& project) {
    std::vector<ListedWord> listed;
    for (auto const& word : operations::wordsOf(project)) listed.push_back({listed.size(), word.text, {}});
    for (auto const& word : timelineWords(project))
        if (auto& at = listed[word.index].shownAt; !at) at = word.range.start; // what is shown twice, where it is first
    return listed;
}

}
