#include <Tavaro/Studio/Timeline/ItemText.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>

#include <cctype>
#include <cmath>
#include <filesystem>
#include <type_traits>

#include <fmt/format.h>

namespace tavaro {

namespace {

/// "screenOnly" as people write it: "Screen Only".
std::string words(std::string_view name) {
    std::string text;
    for (char const letter : name) {
        bool const isUpper = std::isupper(static_cast<unsigned char>(letter)) != 0;
        if (isUpper && !text.empty()) text += ' ';
        text += text.empty() ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
    }
    return text;
}

/// One line of at most so many bytes, cut between characters.
std::string line(std::string_view text) {
    constexpr std::size_t most = 120;
    std::string result(text.substr(0, most));
    while (text.size() > most && !result.empty() && (static_cast<unsigned char>(result.back()) & 0xC0) == 0x80)
        result.pop_back();
    if (text.size() > most && !result.empty() && static_cast<unsigned char>(result.back()) >= 0xC0) result.pop_back();
    for (char& each : result) {
        if (static_cast<unsigned char>(each) < ' ') each = ' ';
    }
    return result;
}

std::string times(double factor) {
    double const rounded = std::round(factor * 100) / 100;
    return fmt::format("{:g}×", rounded);
}

std::string labelOf(ZoomEvent const& zoom) { return (zoom.isLoupe() ? "Loupe " : "") + times(zoom.scale); }

std::string labelOf(Overlay const& overlay) {
    auto const kind = words(OverlayKind::caseNames[overlay.kind.content.index()]);
    return std::visit(
        [&](auto const& content) -> std::string {
            if constexpr (requires { content.text; }) {
                return content.text.empty() ? kind : line(content.text);
            } else if constexpr (requires { content.keys; }) {
                std::string keys;
                for (auto const& key : content.keys) keys += (keys.empty() ? "" : " ") + key;
                return keys.empty() ? kind : line(keys);
            } else {
                return kind;
            }
        },
        overlay.kind.content);
}

std::string cardLabel(std::optional<TitleCard> const& card, std::string_view empty) {
    return card && !card->text.empty() ? line(card->text) : std::string(empty);
}

std::string stem(std::string const& asset) { return line(std::filesystem::path(asset).stem().string()); }

std::string labelOfSound(DemoProject const& project, Lane const& lane, LaneItem const& item) {
    return lane.trackIndex < project.audioTracks.size() &&
                   item.index < project.audioTracks[lane.trackIndex].clips.size()
               ? stem(project.audioTracks[lane.trackIndex].clips[item.index].asset)
               : std::string();
}

}

std::string speedBadge(VideoClip const& clip) {
    if (clip.speed == 1) return {};
    return clip.speed == 0 ? "Held" : times(clip.speed);
}

std::string itemLabel(DemoProject const& project, Lane const& lane, LaneItem const& item) {
    switch (item.kind) {
    case LaneItemKind::clip: return stem(project.timeline.clips[item.index].asset);
    case LaneItemKind::card:
        return item.id == introCardID ? cardLabel(project.intro, "Intro") : cardLabel(project.outro, "Outro");
    case LaneItemKind::zoom: return labelOf(project.zoomEvents[item.index]);
    case LaneItemKind::overlay: return labelOf(project.overlays[item.index]);
    case LaneItemKind::caption: return line(project.captions.cues[item.index].text);
    case LaneItemKind::scene: return words(nameOf(project.layoutCues[item.index].scene));
    case LaneItemKind::cameraMove: return words(nameOf(project.cameraMoves[item.index].placement));
    case LaneItemKind::audioClip: return labelOfSound(project, lane, item);
    case LaneItemKind::voiceLine: return line(project.voiceover->segments[item.index].text);
    case LaneItemKind::silence: return {};
    case LaneItemKind::redaction: {
        auto const& track = (*project.redactions)[item.index];
        return track.label.empty() ? std::string(displayName(track.kind)) : line(track.label);
    }
    }
    return {};
}

std::string itemDescription(DemoProject const& project, Lane const& lane, LaneItem const& item) {
    auto const label = itemLabel(project, lane, item);
    auto text = std::string(nounOf(item.kind));
    if (!label.empty() && label != text) text += " " + label;
    if (item.kind == LaneItemKind::clip) {
        if (auto const speed = speedBadge(project.timeline.clips[item.index]); !speed.empty()) text += ", " + speed;
    }
    if (item.duration() <= 0) return text + ", at " + Timecode::format(item.start);
    return text + ", " + Timecode::format(item.start) + " to " + Timecode::format(item.end);
}

}
