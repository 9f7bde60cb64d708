#include <TavaroCore/Editing/SilenceRemoval.h>

#include <TavaroCore/Editing/TranscriptEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <utility>
#include <vector>

namespace tavaro {

SpansEdited removeAllSilence(DemoProject& project) {
    std::vector<TimeRange> removed;
    for (auto const& silence : project.silences) {
        if (silence.isRemoved && silence.duration > 0) removed.push_back(silence.range());
    }
    SpansEdited result{.count = static_cast<int>(removed.size())};
    std::erase_if(project.silences, [](SilenceSpan const& silence) { return silence.isRemoved; });
    result.seconds = removeRanges(project, std::move(removed));
    return result;
}

}
