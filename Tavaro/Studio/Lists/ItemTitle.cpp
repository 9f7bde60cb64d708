#include <Tavaro/Studio/Lists/ItemTitle.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Records/Fields.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace tavaro {

namespace {

std::string quoted(std::string_view what, std::string_view text) {
    return text.empty() ? std::string(what) : fmt::format("{} “{}”", what, excerpt(text));
}

std::string of(std::string_view what, OverlayContent::Title const& title) { return quoted(what, title.text); }
std::string of(std::string_view what, OverlayContent::Callout const& callout) { return quoted(what, callout.text); }
std::string of(std::string_view what, OverlayContent::Command const& command) { return quoted(what, command.text); }
std::string of(std::string_view what, OverlayContent::Code const& code) { return quoted(what, code.text); }
std::string of(std::string_view what, OverlayContent::Keycap const& keycap) {
    return quoted(what, fmt::format("{}", fmt::join(keycap.keys, " ")));
}
template<class Drawing> std::string of(std::string_view what, Drawing const&) { return std::string(what); }

}

std::string inWords(std::string_view name) {
    std::string words;
    for (char const c : name) {
        bool const isUpper = c >= 'A' && c <= 'Z', isLower = c >= 'a' && c <= 'z';
        if (words.empty() && isLower) {
            words += static_cast<char>(c - 'a' + 'A');
            continue;
        }
        if (isUpper && !words.empty()) words += ' ';
        words += c;
    }
    return words;
}

std::string titleOf(VideoClip const& clip) {
    if (clip.speed == 0) return "Held Frame";
    return clip.speed == 1 ? std::string("Clip") : fmt::format("Clip {:.4g}×", clip.speed);
}
std::string titleOf(ZoomEvent const& zoom) {
    return fmt::format("{} {:.2g}×", zoom.isLoupe() ? "Glass Loupe" : "Zoom", zoom.scale);
}
std::string titleOf(Overlay const& overlay) {
    auto const what = inWords(OverlayKind::caseNames[overlay.kind.content.index()]);
    return std::visit([&](auto const& content) { return of(what, content); }, overlay.kind.content);
}
std::string titleOf(SilenceSpan const& silence) { return silence.isRemoved ? "Silence to Remove" : "Silence"; }
std::string titleOf(CaptionCue const& caption) { return quoted("Caption", caption.text); }
std::string titleOf(LayoutCue const& cue) { return fmt::format("Scene {}", inWords(nameOf(cue.scene))); }
std::string titleOf(AudioClip const& sound) { return quoted("Sound", sound.asset); }
std::string titleOf(VoiceoverSegment const& segment) { return quoted("Voice-Over", segment.text); }
std::string titleOf(CameraMove const& move) {
    return move.position ? "Camera Move" : fmt::format("Camera Move {}", inWords(nameOf(move.placement)));
}
std::string titleOf(AudioTrack const& track) { return fmt::format("{} Track", inWords(nameOf(track.role))); }
std::string titleOf(RedactionTrack const& redaction) {
    return quoted("Redaction", redaction.label.empty() ? std::string(displayName(redaction.kind)) : redaction.label);
}

}
