#include <Tavaro/Studio/Timeline/LaneContents.h>

#include <TavaroCore/Editing/AudioSplits.h>
#include <TavaroCore/History/ItemEdit.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Timeline/RecordingOnTimeline.h>

#include <algorithm>
#include <map>

namespace tavaro {

namespace {

struct Box {
    LaneItemKind kind = LaneItemKind::clip;
    LaneItemHold hold = LaneItemHold::free;
};

template<class Item> LaneItem boxOf(Item const& item, std::size_t index, Box box) {
    return {item.id, item.start, item.start + item.duration, static_cast<std::uint32_t>(index), box.kind, box.hold};
}

struct ItemLane {
    LaneKind lane;
    Box box;
};
constexpr ItemLane laneOf(ZoomEvent const&) { return {LaneKind::zooms, {LaneItemKind::zoom}}; }
constexpr ItemLane laneOf(Overlay const&) { return {LaneKind::overlays, {LaneItemKind::overlay}}; }
constexpr ItemLane laneOf(CaptionCue const&) { return {LaneKind::captions, {LaneItemKind::caption}}; }
constexpr ItemLane laneOf(SilenceSpan const&) {
    return {LaneKind::silences, {LaneItemKind::silence, LaneItemHold::trimmable}};
}

template<class Item> std::vector<LaneItem> boxesOf(std::vector<Item> const& items, Box box) {
    std::vector<LaneItem> boxes;
    boxes.reserve(items.size());
    for (auto const& item : items) boxes.push_back(boxOf(item, boxes.size(), box));
    return boxes;
}
template<class Item> std::vector<LaneItem> boxesOf(std::vector<Item> const& items) {
    return boxesOf(items, laneOf(Item{}).box);
}

std::vector<LaneItem> filmItems(DemoProject const& project) {
    auto items = boxesOf(project.timeline.clips, {LaneItemKind::clip, LaneItemHold::free});
    double const end = project.duration();
    auto const card = [&](UUID id, double start, double duration) {
        if (duration > 0)
            items.push_back({id, start, start + duration, 0, LaneItemKind::card, LaneItemHold::trimmable});
    };
    card(introCardID, -project.introDuration(), project.introDuration());
    card(outroCardID, end, project.outroDuration());
    return items;
}

/// Each scene lasts until the next one; the last, as long as the edit.
std::vector<LaneItem> sceneItems(DemoProject const& project) {
    std::vector<LaneItem> items;
    for (std::uint32_t index = 0; auto const& cue : project.layoutCues) {
        items.push_back({cue.id, cue.time, 0, index++, LaneItemKind::scene, LaneItemHold::free});
    }
    std::ranges::stable_sort(items, {}, &LaneItem::start);
    double end = project.duration();
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
        item->end = std::max(end, item->start);
        end = item->start;
    }
    return items;
}

std::vector<LaneItem> cameraItems(DemoProject const& project) {
    auto items = sceneItems(project);
    for (std::uint32_t index = 0; auto const& move : project.cameraMoves) {
        items.push_back({move.id, move.time, move.time, index++, LaneItemKind::cameraMove, LaneItemHold::placed});
    }
    return items;
}

std::vector<LaneItem> voiceItems(DemoProject const& project) {
    std::vector<LaneItem> items;
    if (!project.voiceover) return items;
    for (std::uint32_t index = 0; auto const& line : project.voiceover->segments) {
        items.push_back({line.id, line.start, line.end(), index++, LaneItemKind::voiceLine, LaneItemHold::placed});
    }
    return items;
}

/// Redactions belong to the recording, so each has a box wherever the film shows its time.
std::vector<LaneItem> redactionItems(DemoProject const& project) {
    std::vector<LaneItem> items;
    auto const usual = recordingAsset(project);
    std::map<std::string_view, RecordingOnTimeline> recordings;
    for (std::uint32_t index = 0; auto const& track : *project.redactions) {
        std::string_view const asset = track.asset ? std::string_view(*track.asset) : usual;
        auto const& shown = recordings.try_emplace(asset, project.timeline, asset).first->second;
        for (auto const& stretch : shown.stretches({track.start, track.duration()})) {
            items.push_back({track.id, stretch.range.start, stretch.range.end(), index, LaneItemKind::redaction,
                             LaneItemHold::free});
        }
        ++index;
    }
    return items;
}

}

std::vector<LaneItem> laneItems(DemoProject const& project, LaneKind kind) {
    switch (kind) {
    case LaneKind::film: return filmItems(project);
    case LaneKind::zooms: return boxesOf(project.zoomEvents);
    case LaneKind::overlays: return boxesOf(project.overlays);
    case LaneKind::captions: return boxesOf(project.captions.cues);
    case LaneKind::camera: return cameraItems(project);
    case LaneKind::sound: return {};
    case LaneKind::voiceover: return voiceItems(project);
    case LaneKind::silences: return boxesOf(project.silences);
    case LaneKind::redactions: return redactionItems(project);
    }
    return {};
}

LaneBoxOfItem laneItem(DemoProject const& project, ItemPlace const& place) {
    LaneBoxOfItem found;
    forEachEditedList(project, [&](auto const& items) {
        using Item = typename std::remove_cvref_t<decltype(items)>::value_type;
        if (listFieldOf(Item{}) != place.field) return;
        auto const on = laneOf(Item{});
        found = {on.lane, boxOf(items.at(place.index), place.index, on.box)};
    });
    return found;
}

std::vector<LaneItem> soundItems(AudioTrack const& track) {
    // What was recorded with the picture stays with it.
    auto const hold = isRecorded(track.role) ? LaneItemHold::trimmable : LaneItemHold::free;
    return boxesOf(track.clips, {LaneItemKind::audioClip, hold});
}

std::span<std::string_view const> fieldsOf(LaneKind kind) {
    static constexpr std::array<std::string_view, 3> film = {"timeline", "intro", "outro"};
    static constexpr std::array<std::string_view, 1> zooms = {"zoomEvents"}, overlays = {"overlays"},
                                                     captions = {"captions"}, sound = {"audioTracks"},
                                                     voiceover = {"voiceover"}, silences = {"silences"};
    static constexpr std::array<std::string_view, 3> camera = {"layoutCues", "cameraMoves", "timeline"};
    static constexpr std::array<std::string_view, 4> redactions = {"redactions", "timeline", "assetDurations",
                                                                   "metadata"};
    switch (kind) {
    case LaneKind::film: return film;
    case LaneKind::zooms: return zooms;
    case LaneKind::overlays: return overlays;
    case LaneKind::captions: return captions;
    case LaneKind::camera: return camera;
    case LaneKind::sound: return sound;
    case LaneKind::voiceover: return voiceover;
    case LaneKind::silences: return silences;
    case LaneKind::redactions: return redactions;
    }
    return {};
}

TimeRange presentationRange(DemoProject const& project) {
    return {-project.introDuration(), project.introDuration() + project.duration() + project.outroDuration()};
}

std::string laneName(LaneKind kind) {
    constexpr std::array<std::string_view, 9> names = {"Film",  "Zooms",      "Overlays", "Captions",  "Camera",
                                                       "Sound", "Voice-Over", "Silences", "Redactions"};
    return std::string(names[static_cast<std::size_t>(kind)]);
}

std::string laneName(AudioTrack const& track) {
    constexpr std::array<std::string_view, 5> names = {"Microphone", "System Sound", "Voice-Over", "Music",
                                                       "Camera Sound"};
    return std::string(names[static_cast<std::size_t>(track.role)]);
}

}
