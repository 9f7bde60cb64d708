#include <Tavaro/Model/Operations/CaptionOperations.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Captions/Subtitles.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro::operations {

namespace {

[[noreturn]] void fail(std::string const& sentence) {
    throw OperationError(OperationError::Kind::notPossible, sentence);
}

std::string take(DemoProject& project, std::vector<CaptionCue> cues, std::string_view source) {
    project.captions.cues = std::move(cues);
    project.captions.isEnabled = true;
    return fmt::format("Made {} from {}", counted(project.captions.cues.size(), "caption"), source);
}

std::string nameOf(std::optional<std::string> const& file, std::string_view otherwise) {
    return file ? fmt::format("“{}”", *file) : std::string(otherwise);
}

std::vector<CaptionCue> cuesOf(CaptionsFromSubtitles const& making) {
    try {
        return readSubtitles(making.subtitles);
    } catch (SubtitleError const& error) {
        if (!making.file) throw;
        throw SubtitleError(error, nameOf(making.file, ""));
    }
}

void moveEarlier(CaptionCue& cue, double by) {
    cue.start -= by;
    for (auto& word : cue.words) {
        word.start -= by;
        word.end -= by;
    }
}

}

std::string apply(DemoProject& project, CaptionsFromTranscript const& making) {
    if (!project.transcript) fail("The project has no transcript to make captions from.");
    auto cues = captionCuesFromTranscript(project,
                                          {.maxCharacters = making.maxCharacters, .breakOnPause = making.breakOnPause});
    if (cues.empty()) fail("The edit shows no words of the transcript to make captions from.");
    return take(project, std::move(cues), "the transcript");
}

std::string apply(DemoProject& project, CaptionsFromScript const& making) {
    double const left = project.duration() - making.start;
    double const duration = std::min(making.duration.value_or(left), left);
    if (!(duration > 0))
        fail(fmt::format("The edit is over at {}, so no captions can begin at {}.", shownTime(project.duration()),
                         shownTime(making.start)));
    auto cues = CaptionTrack::cuesFromScript(making.script, making.start, duration, making.maxCharacters);
    if (cues.empty()) fail(fmt::format("There is no text in {}.", nameOf(making.file, "the script")));
    return take(project, std::move(cues), "the script");
}

std::string apply(DemoProject& project, CaptionsFromSubtitles const& making) {
    auto cues = cuesOf(making);
    auto const read = cues.size();
    for (auto& cue : cues) moveEarlier(cue, project.introDuration());
    std::erase_if(cues, [&](CaptionCue const& cue) {
        return cue.range().end() <= 0 || cue.start >= project.duration() || !(cue.duration > 0);
    });
    if (cues.empty())
        fail(fmt::format("None of the {} captions in {} is within the edit, which is {} long.", read,
                         nameOf(making.file, "the subtitles"), shownTime(project.duration())));
    return take(project, std::move(cues), "the subtitles");
}

}
