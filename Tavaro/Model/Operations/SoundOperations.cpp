#include <Tavaro/Model/Operations/SoundOperations.h>

#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

namespace tavaro::operations {

std::string soundProblem(std::string const& text) {
    if (enumNamed<AudioRole>(text) || namesClip(text)) return "";
    return fmt::format(
        "“{}” is no track (microphone, system, voiceover, music, camera), no time in seconds and no clip's id", text);
}

std::string apply(DemoProject& project, Mute const& mute) {
    auto const* verb = mute.muted ? "Muted" : "Unmuted";
    if (auto const role = enumNamed<AudioRole>(mute.what)) {
        setTrackMuted(project, *role, mute.muted);
        return fmt::format("{} the {} track", verb, mute.what);
    }
    auto const clip = clipNamed(project, mute.what);
    setMuted(project, clip.id, mute.muted);
    return fmt::format("{} the clip at {}", verb, shownSpan(clip.range()));
}

std::string apply(DemoProject& project, ChangeVolume const& change) {
    setTrackGain(project, change.track, change.level);
    return fmt::format("The {} track plays at {:g} times its volume", nameOf(change.track), change.level);
}

}
