#include <Tavaro/Studio/Exports/FilmCaptions.h>

#include <TavaroCore/Captions/Subtitles.h>
#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Files/PendingFile.h>

#include <algorithm>
#include <system_error>
#include <vector>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// Those that the part shows, cut to it; `part` is in seconds of the edit.
std::vector<CaptionCue> cuesIn(std::vector<CaptionCue> const& cues, TimeRange const& part) {
    std::vector<CaptionCue> shown;
    for (auto cue : cues) {
        if (!cue.range().intersects(part)) continue;
        auto const end = std::min(cue.range().end(), part.end());
        cue.start = std::max(cue.start, part.start);
        cue.duration = end - cue.start;
        shown.push_back(cue);
    }
    return shown;
}

std::string subtitles(DemoProject const& project, std::optional<TimeRange> const& part) {
    auto const intro = project.introDuration();
    if (!part) return subRipText(project.captions.cues, intro);
    TimeRange const ofEdit{part->start - intro, part->duration};
    return subRipText(cuesIn(project.captions.cues, ofEdit), -ofEdit.start);
}

}

void requireCaptions(DemoProject const& project) {
    if (project.captions.cues.empty()) throw Error("The film has no captions yet.");
}

fs::path writeFilmCaptions(fs::path const& file, DemoProject const& project, std::optional<TimeRange> const& part) {
    requireCaptions(project);
    std::error_code ignored; // writing says what is wrong
    fs::create_directories(file.parent_path(), ignored);
    PendingFile pending(file);
    pending.append(subtitles(project, part));
    return commitUnderUnusedName(pending, file);
}

}
