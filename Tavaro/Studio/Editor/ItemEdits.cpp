#include <Tavaro/Studio/Editor/ItemEdits.h>

#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Studio/Editor/RedactionEdits.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <TavaroCore/Editing/AudioSplits.h>
#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Records/JSON.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace tavaro {

namespace {

constexpr double shortestItem = 0.05; // seconds, as of the edits that stretch time
constexpr double usualLength = 2.5;   // seconds of a new item

using Identities = std::set<UUID>;

Identities setOf(std::span<UUID const> items) { return {items.begin(), items.end()}; }

/// What is placed in the film's time and moves in it: not clips, tracks, and what is placed in recorded time.
template<class Item> constexpr bool isPlaced =
    !std::same_as<Item, VideoClip> && !std::same_as<Item, AudioTrack> && !std::same_as<Item, RedactionTrack>;

template<class Item> void shift(Item& item, double by) {
    if constexpr (requires { item.time; })
        item.time += by;
    else
        item.start += by;
    if constexpr (std::same_as<Item, CaptionCue>) {
        for (auto& word : item.words) {
            word.start += by;
            word.end += by;
        }
    }
    if constexpr (std::same_as<Item, VoiceoverSegment>) {
        if (item.anchor) *item.anchor += by;
    }
}

std::vector<TimeRange> clipRanges(DemoProject const& project, Identities const& items, bool areSelected) {
    std::vector<TimeRange> ranges;
    for (auto const& clip : project.timeline.clips) {
        if (items.contains(clip.id) == areSelected) ranges.push_back(clip.range());
    }
    std::ranges::sort(ranges, std::greater{}, &TimeRange::start);
    return ranges;
}

/// From the latest to the earliest, so that each is still where it was.
void cutClips(DemoProject& project, Identities const& items, bool areSelected) {
    for (auto const& range : clipRanges(project, items, areSelected))
        removeTimeRange(project, range.start, range.duration);
}

template<class Keep> void keepItems(DemoProject& project, Keep keep) {
    forEachItemList(project, [&](auto& items) {
        using Item = typename std::remove_cvref_t<decltype(items)>::value_type;
        if constexpr (!std::same_as<Item, VideoClip> && !std::same_as<Item, AudioTrack>)
            std::erase_if(items, [&](Item const& item) { return !keep(item); });
    });
}

void fitRamps(ZoomEvent& zoom) {
    auto const ramps = zoom.rampIn + zoom.rampOut;
    if (ramps <= zoom.duration || ramps <= 0) return;
    zoom.rampIn *= zoom.duration / ramps;
    zoom.rampOut *= zoom.duration / ramps;
}

template<class Item> void setSpan(Item& item, ClipEdge edge, double to) {
    auto const end = item.start + item.duration;
    if (edge == ClipEdge::leading) {
        item.start = std::clamp(to, 0.0, std::max(end - shortestItem, 0.0));
        item.duration = end - item.start;
    } else {
        item.duration = std::max(to - item.start, shortestItem);
    }
    if constexpr (std::same_as<Item, ZoomEvent>) fitRamps(item);
}

/// The lists that a document which was copied out of another has: no log, no transcript, nothing of the whole film.
DemoProject onlyItems(DemoProject const& project) {
    DemoProject copied;
    copied.name = project.name;
    copied.timeline = project.timeline;
    copied.assetDurations = project.assetDurations;
    copied.zoomEvents = project.zoomEvents;
    copied.overlays = project.overlays;
    copied.silences = project.silences;
    copied.captions.cues = project.captions.cues;
    copied.layoutCues = project.layoutCues;
    copied.cameraMoves = project.cameraMoves;
    copied.audioTracks = project.audioTracks;
    copied.redactions = project.redactions;
    if (project.voiceover) copied.voiceover.emplace().segments = project.voiceover->segments;
    return copied;
}

bool hasClips(DemoProject const& project, Identities const& items) {
    return std::ranges::any_of(project.timeline.clips, [&](auto const& clip) { return items.contains(clip.id); });
}

/// Camera moves stay where they are when time is cut out, so they are left behind by their own times.
void cutAround(DemoProject& copied, Identities const& items) {
    for (auto const& range : clipRanges(copied, items, false)) {
        removeTimeRange(copied, range.start, range.duration);
        for (auto& move : copied.cameraMoves) {
            if (move.time >= range.end()) move.time -= range.duration;
        }
    }
}

void beginAtZero(DemoProject& copied) {
    double first = std::numeric_limits<double>::infinity();
    forEachItem(copied, [&](auto const& item) {
        if constexpr (isPlaced<std::remove_cvref_t<decltype(item)>>) first = std::min(first, placeOf(item)->start);
    });
    if (!std::isfinite(first)) return;
    forEachItem(copied, [&](auto& item) {
        if constexpr (isPlaced<std::remove_cvref_t<decltype(item)>>) shift(item, -first);
    });
}

enum class Identity { fresh, kept };

/// Opens the film at a time for as long as the copied clips last, and puts them in.
void insertClips(DemoProject& project, DemoProject const& copied, double at, std::vector<UUID>& added,
                 Identity identity) {
    auto const length = copied.duration();
    if (length <= 0) return;
    splitClip(project, at);
    splitAudio(project, at, AudioReach::recorded);
    rippleInsert(project, at, length);
    for (auto& clip : project.timeline.clips) {
        if (clip.start >= at - 1e-9) clip.start += length;
    }
    for (auto clip : copied.timeline.clips) {
        clip.start += at;
        if (identity == Identity::fresh) clip.id = UUID::random();
        added.push_back(clip.id);
        project.timeline.clips.push_back(std::move(clip));
    }
    project.timeline.sortClips();
}

AudioTrack& trackFor(DemoProject& project, AudioTrack const& like) {
    auto const found = std::ranges::find(project.audioTracks, like.role, &AudioTrack::role);
    if (found != project.audioTracks.end()) return *found;
    auto track = like;
    track.id = UUID::random();
    track.clips.clear();
    return project.audioTracks.emplace_back(std::move(track));
}

template<class Item> struct Pasting {
    double at;
    Identity identity;
    Identities const* taken; // of a sound that is parted, the part that stays has its identity
    std::vector<UUID>* added;

    void into(std::vector<Item>& list, std::vector<Item> const& copied) const {
        for (auto item : copied) {
            if constexpr (isPlaced<Item>) shift(item, at);
            if (identity == Identity::fresh || taken->contains(item.id)) item.id = UUID::random();
            if (added) added->push_back(item.id);
            list.push_back(std::move(item));
        }
    }
};

std::vector<UUID> paste(DemoProject& project, DemoProject const& copied, double at, Identity identity) {
    std::vector<UUID> added;
    Identities taken;
    forEachItem(std::as_const(project), [&](auto const& item) { taken.insert(item.id); });
    insertClips(project, copied, at, added, identity);
    bool const withClips = !added.empty();
    auto const add = [&]<class Item>(std::vector<Item>& list, std::vector<Item> const& items) {
        Pasting<Item>{at, identity, &taken, &added}.into(list, items);
    };
    add(project.zoomEvents, copied.zoomEvents);
    add(project.overlays, copied.overlays);
    add(project.silences, copied.silences);
    add(project.captions.cues, copied.captions.cues);
    add(project.layoutCues, copied.layoutCues);
    add(project.cameraMoves, copied.cameraMoves);
    if (!copied.redactions->empty()) add(project.redactions.edit(), *copied.redactions);
    if (copied.voiceover) {
        if (!project.voiceover) project.voiceover.emplace();
        add(project.voiceover->segments, copied.voiceover->segments);
    }
    for (auto const& track : copied.audioTracks) {
        if (track.clips.empty()) continue;
        // The sound of a clip that comes along is not what was pasted.
        bool const comesAlong = withClips && isRecorded(track.role);
        Pasting<AudioClip>{at, identity, &taken, comesAlong ? nullptr : &added}.into(trackFor(project, track).clips,
                                                                                     track.clips);
    }
    auto const media = mediaOf(copied);
    for (auto const& [asset, seconds] : copied.assetDurations) {
        if (media.contains(asset)) project.assetDurations.try_emplace(asset, seconds);
    }
    return added;
}

/// A span for a new item: it begins at the time, or earlier where the film ends too soon.
TimeRange roomAt(DemoProject const& project, double at) {
    auto const end = project.duration();
    auto const start = std::clamp(at, 0.0, std::max(end - 0.5, 0.0));
    return {start, std::max(std::min(usualLength, end - start), shortestItem)};
}

/// Where it belongs in a list by start.
template<class Item> UUID added(std::vector<Item>& items, Item item) {
    auto const id = item.id;
    auto const place =
        std::ranges::find_if(items, [&](Item const& each) { return placeOf(each)->start > placeOf(item)->start; });
    items.insert(place, std::move(item));
    return id;
}

void fillWithWords(OverlayKind& kind) {
    std::visit(
        [](auto& content) {
            if constexpr (requires { content.text; }) content.text = "Text";
            if constexpr (requires { content.keys; }) content.keys = {"⌘", "K"};
            if constexpr (requires { content.rect; }) content.rect = {0.35, 0.4, 0.3, 0.2};
            if constexpr (requires { content.to; }) {
                content.from = {0.3, 0.7};
                content.to = {0.5, 0.5};
            }
        },
        kind.content);
}

}

void removeItems(DemoProject& project, std::span<UUID const> items) {
    auto const gone = setOf(items);
    keepItems(project, [&](auto const& item) { return !gone.contains(item.id); });
    cutClips(project, gone, true);
}

double moveItems(DemoProject& project, std::span<UUID const> items, double by, double at) {
    auto const moving = setOf(items);
    auto const end = project.duration();
    double least = -std::numeric_limits<double>::infinity(), most = std::numeric_limits<double>::infinity();
    std::vector<UUID> hidden;
    forEachItem(std::as_const(project), [&]<class Item>(Item const& item) {
        if (!moving.contains(item.id)) return;
        std::optional<TimeRange> place;
        if constexpr (isPlaced<Item>) place = placeOf(item);
        if constexpr (std::same_as<Item, RedactionTrack>) {
            place = shownSpan(project, item, at);
            hidden.push_back(item.id);
        }
        if (!place) return;
        least = std::max(least, std::min(-place->start, 0.0));
        most = std::min(most, std::max(end - place->end(), 0.0));
    });
    auto const moved = std::clamp(by, least, std::max(least, most));
    for (auto const& id : hidden) moveRedaction(project, id, moved, at);
    forEachItem(project, [&](auto& item) {
        if constexpr (isPlaced<std::remove_cvref_t<decltype(item)>>) {
            if (moving.contains(item.id)) shift(item, moved);
        }
    });
    return moved;
}

void moveItemEdge(DemoProject& project, UUID const& id, ClipEdge edge, double to, double at) {
    visitItem(project, id, [&](auto& item) {
        using Item = std::remove_cvref_t<decltype(item)>;
        auto const time = std::clamp(to, 0.0, std::max(project.duration(), 0.0));
        if constexpr (std::same_as<Item, VideoClip>)
            trimClip(project, id, edge, to);
        else if constexpr (std::same_as<Item, AudioClip>)
            growAudio(project, id, edge, edge == ClipEdge::leading ? item.start - to : to - item.range().end());
        else if constexpr (std::same_as<Item, RedactionTrack>)
            trimRedaction(project, id, edge, time, at);
        else if constexpr (requires { item.time; })
            item.time = time;
        else if constexpr (std::same_as<Item, VoiceoverSegment>)
            item.start = edge == ClipEdge::leading ? time : item.start;
        else if constexpr (isPlaced<Item>)
            setSpan(item, edge, time);
    });
}

void moveClip(DemoProject& project, UUID const& id, double to) {
    auto const& clips = project.timeline.clips;
    auto const clip = std::ranges::find(clips, id, &VideoClip::id);
    if (clip == clips.end() || clips.size() < 2) return;
    auto const range = clip->range();
    if (range.duration <= 0.001) return; // no cut takes out so little
    auto target = project.duration();
    for (auto const& each : clips) {
        if (std::abs(each.start - to) < std::abs(target - to)) target = each.start;
    }
    if (target >= range.start && target <= range.end()) return;
    std::vector<UUID> along{id};
    forEachItem(std::as_const(project), [&](auto const& item) {
        using Item = std::remove_cvref_t<decltype(item)>;
        if constexpr (isPlaced<Item> && !std::same_as<Item, AudioClip>) {
            auto const place = *placeOf(item);
            if (place.start >= range.start && place.start < range.end() && place.end() <= range.end())
                along.push_back(item.id);
        }
    });
    auto const moved = copiedItems(project, along);
    removeItems(project, along);
    auto const at = target > range.start ? target - range.duration : target;
    paste(project, moved, project.timeline.nearestEdge(at), Identity::kept);
}

DemoProject copiedItems(DemoProject const& project, std::span<UUID const> items) {
    auto const chosen = setOf(items);
    auto copied = onlyItems(project);
    bool const withClips = hasClips(project, chosen);
    if (withClips)
        cutAround(copied, chosen);
    else
        copied.timeline.clips.clear();
    // Cuts give the parts of sounds identities of their own, so those of a clip are known by their tracks.
    for (auto& track : copied.audioTracks) {
        if (!withClips || !isRecorded(track.role))
            std::erase_if(track.clips, [&](AudioClip const& clip) { return !chosen.contains(clip.id); });
    }
    keepItems(copied,
              [&]<class Item>(Item const& item) { return std::same_as<Item, AudioClip> || chosen.contains(item.id); });
    std::erase_if(copied.audioTracks, [](AudioTrack const& track) { return track.clips.empty(); });
    if (copied.voiceover && copied.voiceover->segments.empty()) copied.voiceover.reset();
    if (!withClips) beginAtZero(copied);
    return copied;
}

std::vector<UUID> pasteItems(DemoProject& project, DemoProject const& copied, double at) {
    return paste(project, copied, project.timeline.nearestEdge(at), Identity::fresh);
}

std::set<std::string> mediaOf(DemoProject const& copied) {
    std::set<std::string> media;
    for (auto const& clip : copied.timeline.clips) media.insert(clip.asset);
    for (auto const& track : copied.audioTracks) {
        for (auto const& clip : track.clips) media.insert(clip.asset);
    }
    if (copied.voiceover) {
        for (auto const& segment : copied.voiceover->segments) {
            if (segment.audioAsset) media.insert(*segment.audioAsset);
        }
    }
    return media;
}

UUID addZoom(DemoProject& project, double at, ZoomStyle style) {
    auto const span = roomAt(project, at);
    ZoomEvent zoom{.start = span.start, .duration = span.duration, .style = style};
    if (auto const source = project.timeline.sourceTime(at)) {
        if (auto const pointer = project.metadata->cursorPosition(*source)) zoom.center = pointer->clamped();
    }
    fitRamps(zoom);
    return added(project.zoomEvents, std::move(zoom));
}

UUID addOverlay(DemoProject& project, double at, std::string_view kind) {
    auto const span = roomAt(project, at);
    Overlay overlay{.start = span.start, .duration = span.duration};
    detail::selectCase(overlay.kind, detail::caseIndex<OverlayKind>(kind));
    fillWithWords(overlay.kind);
    return added(project.overlays, std::move(overlay));
}

UUID addCaption(DemoProject& project, double at) {
    auto const span = roomAt(project, at);
    project.captions.isEnabled = true;
    return added(project.captions.cues, CaptionCue{.start = span.start, .duration = span.duration, .text = "Caption"});
}

UUID addScene(DemoProject& project, double at) {
    auto before = project.baseScene();
    double latest = -1;
    for (auto const& cue : project.layoutCues) {
        if (cue.time > at || cue.time < latest) continue;
        latest = cue.time;
        before = cue.scene;
    }
    auto const scene = before == SceneLayout::screenOnly ? SceneLayout::overlay : SceneLayout::screenOnly;
    return added(project.layoutCues, LayoutCue{.time = at, .scene = scene});
}

UUID addCameraMove(DemoProject& project, double at) {
    auto const placement = project.camera.placement == CameraPlacement::bottomRight ? CameraPlacement::bottomLeft
                                                                                    : CameraPlacement::bottomRight;
    return added(project.cameraMoves, CameraMove{.time = at, .placement = placement});
}

std::optional<UUID> addRedaction(DemoProject& project, double at) {
    auto const* clip = project.timeline.clip(at);
    if (!clip) return std::nullopt;
    auto const source = *project.timeline.sourceTime(at);
    NormalizedRect const area{0.35, 0.4, 0.3, 0.2};
    RedactionTrack track{.label = "Area",
                         .asset = clip->asset,
                         .start = source,
                         .end = clip->sourceStart + clip->sourceSpan(),
                         .keyframes = {{source, area}}};
    auto const id = track.id;
    project.redactions.edit().push_back(std::move(track));
    return id;
}

KeyframePlace keyframePlace(DemoProject const& project, UUID const& redaction, double at) {
    auto const& tracks = *project.redactions;
    auto const track = std::ranges::find(tracks, redaction, &RedactionTrack::id);
    auto const* clip = project.timeline.clip(at);
    if (track == tracks.end() || track->keyframes.empty() || isFinding(*track) || !clip) return KeyframePlace::none;
    double const source = *project.timeline.sourceTime(at);
    bool const isThere = source >= track->start && source <= track->end;
    if (!isThere || (track->asset && *track->asset != clip->asset)) return KeyframePlace::none;
    return track->keyframeAt(source) ? KeyframePlace::taken : KeyframePlace::free;
}

void addKeyframe(DemoProject& project, UUID const& redaction, double at) {
    if (keyframePlace(project, redaction, at) != KeyframePlace::free) return;
    auto& tracks = project.redactions.edit();
    auto const track = std::ranges::find(tracks, redaction, &RedactionTrack::id);
    track->ensureKeyframe(*project.timeline.sourceTime(at));
    track->isAutomatic = false; // the next scan leaves it as it is
}

void removeKeyframe(DemoProject& project, UUID const& redaction, double at) {
    if (keyframePlace(project, redaction, at) != KeyframePlace::taken) return;
    auto& tracks = project.redactions.edit();
    auto const track = std::ranges::find(tracks, redaction, &RedactionTrack::id);
    auto const place = track->keyframeAt(*project.timeline.sourceTime(at));
    if (track->keyframes.size() < 2 || !place) return;
    track->keyframes.erase(track->keyframes.begin() + static_cast<std::ptrdiff_t>(*place));
    track->isAutomatic = false;
}

}
