#pragma once

#include <TavaroCore/Editing/TimedLists.h>
#include <TavaroCore/Project/DemoProject.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tavaro {

struct UUIDHash {
    std::size_t operator()(UUID const& id) const {
        std::array<std::size_t, 2> halves{}; // random by themselves
        std::memcpy(halves.data(), id.bytes.data(), sizeof halves);
        return halves[0] ^ halves[1];
    }
};

/// What a list of the document holds, for views and selections.
enum class ItemKind { clip, zoom, overlay, silence, caption, scene, sound, voiceover, cameraMove, track, redaction };

constexpr std::array<std::string_view, 11> namesOf(ItemKind) {
    return {"clip",  "zoom",      "overlay",    "silence", "caption",  "scene",
            "sound", "voiceover", "cameraMove", "track",   "redaction"};
}

constexpr ItemKind kindOf(VideoClip const&) { return ItemKind::clip; }
constexpr ItemKind kindOf(ZoomEvent const&) { return ItemKind::zoom; }
constexpr ItemKind kindOf(Overlay const&) { return ItemKind::overlay; }
constexpr ItemKind kindOf(SilenceSpan const&) { return ItemKind::silence; }
constexpr ItemKind kindOf(CaptionCue const&) { return ItemKind::caption; }
constexpr ItemKind kindOf(LayoutCue const&) { return ItemKind::scene; }
constexpr ItemKind kindOf(AudioClip const&) { return ItemKind::sound; }
constexpr ItemKind kindOf(VoiceoverSegment const&) { return ItemKind::voiceover; }
constexpr ItemKind kindOf(CameraMove const&) { return ItemKind::cameraMove; }
constexpr ItemKind kindOf(AudioTrack const&) { return ItemKind::track; }
constexpr ItemKind kindOf(RedactionTrack const&) { return ItemKind::redaction; }

/// The document's field in which items of a kind are.
constexpr std::string_view fieldOf(ItemKind kind) {
    constexpr std::array<std::string_view, 11> fields{"timeline",    "zoomEvents",  "overlays",    "silences",
                                                      "captions",    "layoutCues",  "audioTracks", "voiceover",
                                                      "cameraMoves", "audioTracks", "redactions"};
    return fields[static_cast<std::size_t>(kind)];
}

/// Calls `visit` with the vector of each list of items that have an identity: those that edits of the timeline move
/// (`forEachTimedList`), and the others. For a document that may be changed the redactions are made its own.
template<class Project, class Visit>
requires std::same_as<std::remove_const_t<Project>, DemoProject>
void forEachItemList(Project& project, Visit&& visit) {
    visit(project.timeline.clips);
    forEachTimedList(project, visit);
    visit(project.cameraMoves);
    visit(project.audioTracks);
    if constexpr (std::is_const_v<Project>)
        visit(*project.redactions);
    else
        visit(project.redactions.edit());
}

/// Calls `visit` with each item of the document that has an identity.
template<class Project, class Visit> void forEachItem(Project& project, Visit&& visit) {
    forEachItemList(project, [&](auto& items) {
        for (auto& item : items) visit(item);
    });
}

/// Calls `visit` with the item of that identity; false where the document has none.
template<class Project, class Visit> bool visitItem(Project& project, UUID const& id, Visit&& visit) {
    bool isFound = false;
    forEachItemList(project, [&](auto& items) {
        if (isFound) return;
        auto const item = std::ranges::find_if(items, [&](auto const& each) { return each.id == id; });
        if (item == items.end()) return;
        isFound = true;
        visit(*item);
    });
    return isFound;
}

/// The output seconds that an item takes, none in length for a point in time; nothing for what has no place in them:
/// tracks, and redactions, which are placed in recorded time.
template<class Item> std::optional<TimeRange> placeOf(Item const& item) {
    if constexpr (std::same_as<Item, AudioTrack> || std::same_as<Item, RedactionTrack>)
        return std::nullopt;
    else if constexpr (requires { item.time; })
        return TimeRange{item.time, 0};
    else
        return spanOf(item);
}

}
