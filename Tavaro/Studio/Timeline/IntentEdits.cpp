#include <Tavaro/Studio/Timeline/IntentEdits.h>

#include <Tavaro/Studio/Editor/RedactionEdits.h>
#include <Tavaro/Studio/Timeline/LaneItem.h>

#include <TavaroCore/Editing/AudioSplits.h>
#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavaro {

namespace {

using namespace timelineIntents;

template<class Item> Item* find(std::vector<Item>& items, UUID const& id) {
    auto const found = std::ranges::find(items, id, &Item::id);
    return found == items.end() ? nullptr : &*found;
}

void move(ZoomEvent& zoom, double by) { zoom.start += by; }
void move(Overlay& overlay, double by) { overlay.start += by; }
void move(SilenceSpan& silence, double by) { silence.start += by; }
void move(AudioClip& clip, double by) { clip.start += by; }
void move(LayoutCue& cue, double by) { cue.time += by; }
void move(CameraMove& each, double by) { each.time += by; }
void move(CaptionCue& cue, double by) {
    cue.start += by;
    for (auto& word : cue.words) {
        word.start += by;
        word.end += by;
    }
}
void move(VoiceoverSegment& line, double by) {
    line.start += by;
    line.anchor = line.start; // where the hand put it, whatever was spoken before it until then
}

double startOf(LayoutCue const& cue) { return cue.time; }
double startOf(CameraMove const& move) { return move.time; }
template<class Item> double startOf(Item const& item) { return item.start; }

template<class Visit> void forEachMovableList(DemoProject& project, Visit&& visit) {
    visit(project.zoomEvents);
    visit(project.overlays);
    visit(project.captions.cues);
    visit(project.layoutCues);
    visit(project.cameraMoves);
    for (auto& track : project.audioTracks) visit(track.clips);
    if (project.voiceover) visit(project.voiceover->segments);
}

void perform(MoveItems const& intent, DemoProject& project) {
    double by = std::isfinite(intent.by) ? intent.by : 0;
    forEachMovableList(project, [&](auto& items) {
        for (auto const& item : items) {
            if (intent.ids.contains(item.id)) by = std::max(by, -startOf(item));
        }
    });
    forEachMovableList(project, [&](auto& items) {
        for (auto& item : items) {
            if (intent.ids.contains(item.id)) move(item, by);
        }
    });
    std::ranges::stable_sort(project.layoutCues, {}, &LayoutCue::time);
    std::ranges::stable_sort(project.cameraMoves, {}, &CameraMove::time);
    for (auto const& id : intent.ids) moveRedaction(project, id, by, intent.at);
}

/// Moves an edge of what has a start and a duration; it keeps `shortestClip`.
template<class Item> void trim(Item& item, ClipEdge edge, double to) {
    double const end = item.start + item.duration;
    if (edge == ClipEdge::leading) {
        item.start = std::clamp(to, 0.0, std::max(end - shortestClip, 0.0));
        item.duration = end - item.start;
    } else {
        item.duration = std::max(to - item.start, shortestClip);
    }
}

void fitRamps(ZoomEvent& zoom) {
    double const ramps = zoom.rampIn + zoom.rampOut;
    if (ramps <= zoom.duration || ramps <= 0) return;
    zoom.rampIn *= zoom.duration / ramps;
    zoom.rampOut = zoom.duration - zoom.rampIn;
}

void trimCard(DemoProject& project, TrimItem const& intent) {
    constexpr double shortestCard = 0.2;
    auto& card = intent.id == introCardID ? project.intro : project.outro;
    if (!card) return;
    double const length = intent.id == introCardID ? -intent.to : intent.to - project.duration();
    card->duration = std::max(length, shortestCard);
}

/// A scene begins where it is trimmed to; it ends where the next one begins.
void trimScene(DemoProject& project, LayoutCue& cue, TrimItem const& intent) {
    auto* edge = &cue;
    if (intent.edge == ClipEdge::trailing) {
        auto const next = std::ranges::upper_bound(project.layoutCues, cue.time, {}, &LayoutCue::time);
        if (next == project.layoutCues.end()) return;
        edge = &*next;
    }
    edge->time = std::clamp(intent.to, 0.0, project.duration());
    std::ranges::stable_sort(project.layoutCues, {}, &LayoutCue::time);
}

void trimSound(DemoProject& project, AudioClip const& clip, TrimItem const& intent) {
    bool const isLeading = intent.edge == ClipEdge::leading;
    growAudio(project, clip.id, intent.edge, isLeading ? clip.start - intent.to : intent.to - clip.range().end());
}

void perform(TrimItem const& intent, DemoProject& project) {
    if (!std::isfinite(intent.to)) return;
    auto const& id = intent.id;
    if (id == introCardID || id == outroCardID) return trimCard(project, intent);
    if (find(project.timeline.clips, id)) {
        trimClip(project, id, intent.edge, intent.to);
    } else if (auto* zoom = find(project.zoomEvents, id)) {
        trim(*zoom, intent.edge, intent.to);
        fitRamps(*zoom);
    } else if (auto* overlay = find(project.overlays, id)) {
        trim(*overlay, intent.edge, intent.to);
    } else if (auto* cue = find(project.captions.cues, id)) {
        trim(*cue, intent.edge, intent.to);
    } else if (auto* silence = find(project.silences, id)) {
        trim(*silence, intent.edge, intent.to);
    } else if (auto* scene = find(project.layoutCues, id)) {
        trimScene(project, *scene, intent);
    } else if (std::ranges::find(*project.redactions, id, &RedactionTrack::id) != project.redactions->end()) {
        trimRedaction(project, id, intent.edge, intent.to, intent.at);
    } else {
        for (auto& track : project.audioTracks) {
            if (auto const* clip = find(track.clips, id)) return trimSound(project, AudioClip(*clip), intent);
        }
    }
}

void perform(SetRamp const& intent, DemoProject& project) {
    auto* zoom = find(project.zoomEvents, intent.id);
    if (!zoom || !std::isfinite(intent.seconds)) return;
    bool const isIn = intent.edge == ClipEdge::leading;
    double const room = std::max(zoom->duration - (isIn ? zoom->rampOut : zoom->rampIn), 0.0);
    (isIn ? zoom->rampIn : zoom->rampOut) = std::clamp(intent.seconds, 0.0, room);
}

void perform(SlipClip const& intent, DemoProject& project) {
    auto* clip = find(project.timeline.clips, intent.id);
    if (!clip || !std::isfinite(intent.by)) return;
    auto const known = project.assetDurations.find(clip->asset);
    double const last = known == project.assetDurations.end() ? clip->sourceStart : known->second - clip->sourceSpan();
    clip->sourceStart = std::clamp(clip->sourceStart + intent.by, 0.0, std::max(last, 0.0));
}

/// A stretch of the film that goes to another place, and what makes room for it.
///
///     [from)          to|        [-----before-----][from)to|
///
struct Relocation {
    TimeRange from;
    double to = 0; // outside of it

    double shift(double time) const {
        bool const goesBack = to <= from.start;
        if (from.contains(time)) return goesBack ? to - from.start : to - from.end();
        if (goesBack && time >= to && time < from.start) return from.duration;
        if (!goesBack && time >= from.end() && time < to) return -from.duration;
        return 0;
    }
};

/// Items over the picture go with it, and what was recorded with it; music stays.
void relocateItems(DemoProject& project, Relocation const& relocation) {
    for (double const place : {relocation.from.start, relocation.from.end(), relocation.to}) {
        splitAudio(project, place, AudioReach::recorded);
    }
    auto const relocate = [&](auto& items) {
        for (auto& item : items) move(item, relocation.shift(startOf(item)));
    };
    relocate(project.zoomEvents);
    relocate(project.overlays);
    relocate(project.captions.cues);
    relocate(project.silences);
    relocate(project.layoutCues);
    if (project.voiceover) relocate(project.voiceover->segments);
    for (auto& track : project.audioTracks) {
        if (isRecorded(track.role)) relocate(track.clips);
        std::ranges::stable_sort(track.clips, {}, &AudioClip::start);
    }
    std::ranges::stable_sort(project.layoutCues, {}, &LayoutCue::time);
}

void perform(PlaceClip const& intent, DemoProject& project) {
    auto& clips = project.timeline.clips;
    auto const from = std::ranges::find(clips, intent.id, &VideoClip::id);
    auto const to = intent.before ? std::ranges::find(clips, *intent.before, &VideoClip::id) : clips.end();
    if (from == clips.end() || to == from || to == from + 1) return;
    relocateItems(project, {from->range(), to == clips.end() ? project.duration() : to->start});
    if (from < to)
        std::rotate(from, from + 1, to);
    else
        std::rotate(to, from, from + 1);
    double start = 0;
    for (auto& clip : clips) {
        clip.start = start;
        start += std::max(clip.duration, 0.0);
    }
}

template<class Other> void perform(Other const&, DemoProject&) {}

}

void carryOut(TimelineIntent const& intent, DemoProject& project) {
    std::visit([&](auto const& each) { perform(each, project); }, intent);
}

}
