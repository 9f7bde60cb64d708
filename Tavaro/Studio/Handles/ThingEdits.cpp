#include <Tavaro/Studio/Handles/ThingEdits.h>

#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Studio/Editor/ItemEdits.h>
#include <Tavaro/Studio/Editor/RedactionEdits.h>
#include <Tavaro/Studio/Inspectors/FieldTable.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/CanvasUnit.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>
#include <vector>

namespace tavaro {

namespace {

constexpr double leastFont = 8, leastCamera = 0.05, leastLoupe = 0.03;
constexpr double leastCrop = 0.05; // of the recording's side
constexpr double leastArea = 0.004;

template<class Item> Item* find(std::vector<Item>& items, UUID const& id) {
    auto const found = std::ranges::find(items, id, &Item::id);
    return found == items.end() ? nullptr : &*found;
}

template<class Record> double most(std::string_view field) { return factsFor<Record>(field)->most; }

double growth(ThingChange const& change) {
    return change.was.rect.width > 0 ? change.becomes.rect.width / change.was.rect.width : 1;
}
double grownFont(double font, ThingChange const& change, double largest) {
    if (change.grip == FilmGrip::body) return font;
    return std::clamp(font * growth(change), std::min(leastFont, font), std::max(largest, font));
}

/// Where the edges of a part of the recording go. What is only moved keeps its size at the recording's edges.
NormalizedRect onRecording(ThingChange const& change, FramePlaces const& places, NormalizedRect within, double least) {
    auto rect = places.onRecording(change.becomes.rect);
    if (change.grip == FilmGrip::body) {
        auto const size = places.onRecording(change.was.rect);
        rect.width = std::min(size.width, within.width);
        rect.height = std::min(size.height, within.height);
        rect.x = std::clamp(rect.x, within.x, within.maxX() - rect.width);
        rect.y = std::clamp(rect.y, within.y, within.maxY() - rect.height);
        return rect;
    }
    double const left = std::clamp(rect.x, within.x, within.maxX() - least);
    double const top = std::clamp(rect.y, within.y, within.maxY() - least);
    double const right = std::clamp(rect.maxX(), left + least, within.maxX());
    double const bottom = std::clamp(rect.maxY(), top + least, within.maxY());
    return {left, top, right - left, bottom - top};
}

constexpr NormalizedRect wholeFrame{0, 0, 1, 1};

/// The frame shows what the zoom shows: it is as large as the recording's part in it, and stays inside.
void changeZoom(ZoomEvent& zoom, ThingChange const& change, FramePlaces const& places) {
    auto const& rect = change.becomes.rect;
    if (change.grip != FilmGrip::body && rect.width > 0)
        zoom.scale = std::clamp(places.content.width / rect.width, 1.0, most<ZoomEvent>("scale"));
    auto const& crop = places.crop;
    double const x = crop.width / std::max(zoom.scale, 1.0) / 2, y = crop.height / std::max(zoom.scale, 1.0) / 2;
    auto const middle = places.onRecording(rect.center());
    zoom.center = {std::clamp(middle.x, crop.x + x, crop.maxX() - x),
                   std::clamp(middle.y, crop.y + y, crop.maxY() - y)};
    zoom.followsCursor = false;
}

void changeLoupe(ZoomEvent& zoom, ThingChange const& change, FramePlaces const& places) {
    double const radius = change.becomes.rect.width / 2 * static_cast<double>(places.canvas.width);
    if (change.grip != FilmGrip::body)
        zoom.loupeSize = std::clamp(radius / smallerSide(places.canvas), leastLoupe, most<ZoomEvent>("loupeSize"));
    zoom.center = places.onRecording(change.becomes.rect.center()).clamped();
    zoom.followsCursor = false;
}

/// A place that has a name, where the camera's picture is exactly there.
std::optional<CameraPlacement> placementAt(FramePlaces const& places, NormalizedRect const& rect) {
    if (!places.camera) return std::nullopt;
    auto const isThere = [&](NormalizedRect const& place) {
        return std::abs(place.x - rect.x) < 1e-6 && std::abs(place.y - rect.y) < 1e-6;
    };
    auto const found = std::ranges::find_if(places.camera->placements, isThere);
    if (found == places.camera->placements.end()) return std::nullopt;
    return static_cast<CameraPlacement>(found - places.camera->placements.begin());
}

template<class Placed> void place(Placed& placed, ThingChange const& change, FramePlaces const& places) {
    auto const named = placementAt(places, change.becomes.rect);
    if (change.grip != FilmGrip::body) {
        if (placed.position) placed.position = change.becomes.rect.center().clamped();
    } else if (named) {
        placed.placement = *named;
        placed.position.reset();
    } else {
        placed.position = change.becomes.rect.center().clamped();
    }
}

void changeCamera(DemoProject& project, ThingChange const& change, FramePlaces const& places) {
    double const height = change.becomes.rect.height * static_cast<double>(places.canvas.height);
    if (change.grip != FilmGrip::body)
        project.camera.size =
            std::clamp(height / smallerSide(places.canvas), leastCamera, most<CameraSettings>("size"));
    if (auto* move = find(project.cameraMoves, change.was.id))
        place(*move, change, places);
    else
        place(project.camera, change, places);
}

/// A film that is split for some scenes only goes on to begin as it does: its layout alone would split it from there.
void changeDivider(DemoProject& project, ThingChange const& change, FramePlaces const& places) {
    if (!places.divider) return;
    constexpr double smallest = CanvasLayout::Split::smallestPane, beginning = 0.001;
    auto split = project.effectiveSplit(places.canvas);
    split.cameraFraction = std::clamp(places.divider->share(change.becomes.rect.center()), smallest, 1 - smallest);
    auto const isFirst = [](LayoutCue const& cue) { return cue.time <= beginning; };
    if (!project.layout.isSplit() && std::ranges::none_of(project.layoutCues, isFirst))
        project.layoutCues.insert(project.layoutCues.begin(), {.time = 0, .scene = project.baseScene()});
    project.layout.content = split;
}

UnitPoint2 textPlace(UnitPoint2 before, ThingChange const& change) {
    auto const was = change.was.rect.center(), now = change.becomes.rect.center();
    if (change.by == ThingChange::By::hand) return now.clamped();
    return UnitPoint2{before.x + now.x - was.x, before.y + now.y - was.y}.clamped();
}

void changeText(Overlay& overlay, ThingChange const& change) {
    overlay.fontSize = grownFont(overlay.fontSize, change, most<Overlay>("fontSize"));
    overlay.position = textPlace(overlay.position, change);
}

void changeCaptions(CaptionTrack& captions, ThingChange const& change) {
    captions.fontSize = grownFont(captions.fontSize, change, most<CaptionTrack>("fontSize"));
    captions.position = textPlace(captions.position, change);
}

void changeArrow(Overlay& overlay, ThingChange const& change) {
    auto* arrow = std::get_if<OverlayKind::Arrow>(&overlay.kind.content);
    if (!arrow) return;
    arrow->from = change.becomes.from;
    arrow->to = change.becomes.to;
}

void changeArea(Overlay& overlay, ThingChange const& change, FramePlaces const& places) {
    std::visit(
        [&](auto& content) {
            if constexpr (requires { content.rect; }) content.rect = onRecording(change, places, wholeFrame, leastArea);
        },
        overlay.kind.content);
}

/// A finding is followed through the recording by keyframes that are close to each other.
void changeFinding(RedactionTrack& track, ThingChange const& change, FramePlaces const& places) {
    auto const was = places.onRecording(change.was.rect), now = places.onRecording(change.becomes.rect);
    AreaChange by{now.x - was.x, now.y - was.y, now.maxX() - was.maxX(), now.maxY() - was.maxY()};
    if (change.grip == FilmGrip::body) {
        by.right = by.left;
        by.bottom = by.top;
    }
    changeArea(track, by, leastArea);
}

/// One that stays where it is does so elsewhere; one that moves does so from the picture that is looked at, where it
/// gets a keyframe. A finding changes as a whole.
void changeRedaction(DemoProject& project, ThingChange const& change, FramePlaces const& places) {
    auto* track = find(project.redactions.edit(), change.was.id);
    auto const now = onRecording(change, places, wholeFrame, leastArea);
    auto const source = project.timeline.sourceTime(places.editTime);
    if (!track || track->keyframes.empty()) return;
    if (isFinding(*track)) return changeFinding(*track, change, places);
    bool const moves = track->keyframes.size() > 1 && source;
    (moves ? track->ensureKeyframe(*source) : track->keyframes.front()).rect = now;
    track->isAutomatic = false; // the next scan leaves it as it is
}

void changeCrop(DemoProject& project, ThingChange const& change, FramePlaces const& places) {
    auto const crop = onRecording(change, places, wholeFrame, leastCrop);
    constexpr double whole = 1 - 1e-6;
    if (crop.width >= whole && crop.height >= whole)
        project.sourceCrop.reset();
    else
        project.sourceCrop = crop;
}

}

void carryOut(ThingChange const& change, DemoProject& project, FramePlaces const& places) {
    auto const& id = change.was.id;
    switch (change.was.kind) {
    case ThingKind::zoom:
        if (auto* zoom = find(project.zoomEvents, id)) changeZoom(*zoom, change, places);
        break;
    case ThingKind::loupe:
        if (auto* zoom = find(project.zoomEvents, id)) changeLoupe(*zoom, change, places);
        break;
    case ThingKind::redaction: changeRedaction(project, change, places); break;
    case ThingKind::area:
        if (auto* overlay = find(project.overlays, id)) changeArea(*overlay, change, places);
        break;
    case ThingKind::arrow:
        if (auto* overlay = find(project.overlays, id)) changeArrow(*overlay, change);
        break;
    case ThingKind::text:
        if (auto* overlay = find(project.overlays, id)) changeText(*overlay, change);
        break;
    case ThingKind::caption: changeCaptions(project.captions, change); break;
    case ThingKind::camera: changeCamera(project, change, places); break;
    case ThingKind::divider: changeDivider(project, change, places); break;
    case ThingKind::crop: changeCrop(project, change, places); break;
    }
}

std::optional<UUID> hideArea(DemoProject& project, FramePlaces const& places, NormalizedRect const& ofCanvas) {
    if (!places.showsRecording) return std::nullopt;
    auto const id = addRedaction(project, places.editTime);
    if (!id) return std::nullopt;
    ThingChange const drawn{{.kind = ThingKind::redaction, .id = *id},
                            {.kind = ThingKind::redaction, .id = *id, .rect = ofCanvas},
                            FilmGrip::bottomRight};
    carryOut(drawn, project, places);
    return id;
}

}
