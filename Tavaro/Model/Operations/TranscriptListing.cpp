#include <Tavaro/Model/Operations/TranscriptListing.h>

#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/TimelineWords.h>

namespace tavaro {

std::vector<ListedWord> listWords(DemoProject const& project) {
    std::vector<ListedWord> listed;
    for (auto const& word : operations::wordsOf(project)) listed.push_back({listed.size(), word.text, {}});
    for (auto const& word : timelineWords(project)) listed[word.index].shownAt = word.range.start;
    return listed;
}

}
