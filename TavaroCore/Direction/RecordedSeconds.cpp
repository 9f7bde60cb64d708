#include <TavaroCore/Direction/RecordedSeconds.h>

#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>

namespace tavaro {

double recordedSeconds(DemoProject const& project) {
    double seconds = project.metadata->duration();
    for (auto const& clip : project.timeline.clips) {
        auto const known = project.assetDurations.find(clip.asset);
        seconds = std::max(seconds, known != project.assetDurations.end() ? known->second
                                                                          : clip.sourceStart + clip.sourceSpan());
    }
    return seconds;
}

}
