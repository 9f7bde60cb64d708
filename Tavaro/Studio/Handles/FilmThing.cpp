#include <Tavaro/Studio/Handles/FilmThing.h>

#include <Tavaro/Studio/Editor/CaptionEdits.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>
#include <Tavaro/Studio/Lists/ItemTitle.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroCore/Zoom/LoupeResolver.h>
#include <TavaroRender/Places/FramePlaces.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

namespace tavaro {

namespace {

template<class Item> Item const* find(std::vector<Item> const& items, UUID const& id) {
    auto const found = std::ranges::find(items, id, &Item::id);
    return found == items.end() ? nullptr : &*found;
}

NormalizedRect around(UnitPoint2 a, UnitPoint2 b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::abs(a.x - b.x), std::abs(a.y - b.y)};
}

NormalizedRect square(UnitPoint2 centre, double radius, Size2 canvas) {
    double const width = radius * smallerSide(canvas) / static_cast<double>(canvas.width);
    double const height = radius * smallerSide(canvas) / static_cast<double>(canvas.height);
    return {centre.x - width, centre.y - height, 2 * width, 2 * height};
}

class Finder {
public:
    Finder(DemoProject const& project, FramePlaces const& places, ThingsWanted const& wanted)
        : project_(project)
        , places_(places)
        , wanted_(wanted) {}

    std::vector<FilmThing> find() {
        if (wanted_.withCrop) {
            if (places_.showsRecording)
                add({.kind = ThingKind::crop, .rect = places_.onCanvas(project_.effectiveCrop())});
            return std::move(things_);
        }
        for (auto const& zoom : places_.zooms) addZoom(zoom);
        for (auto const& each : places_.redactions)
            add({.kind = ThingKind::redaction, .id = each.id, .rect = each.rect});
        addRejected();
        addOverlays(ThingKind::area);
        addLoupes();
        addCamera();
        addDivider();
        addOverlays(ThingKind::arrow);
        addOverlays(ThingKind::text);
        if (places_.caption)
            add({.kind = ThingKind::caption, .id = places_.caption->id, .rect = places_.caption->rect});
        return std::move(things_);
    }

private:
    void add(FilmThing const& thing) { things_.push_back(thing); }

    bool isSelected(UUID const& id) const {
        return std::ranges::find(wanted_.selection, id) != wanted_.selection.end();
    }

    /// The frame of a zoom is there while it is worked on, and lies on the picture as it is without it.
    void addZoom(ZoomWindow const& zoom) {
        if (!isSelected(zoom.id) || places_.zoom.scale != 1) return;
        auto const& crop = places_.crop;
        NormalizedRect const recorded{crop.x + zoom.rect.x * crop.width, crop.y + zoom.rect.y * crop.height,
                                      zoom.rect.width * crop.width, zoom.rect.height * crop.height};
        add({.kind = ThingKind::zoom, .id = zoom.id, .rect = places_.onCanvas(recorded)});
    }

    /// Where the picture would be hidden.
    void addRejected() {
        auto const* clip = project_.timeline.clip(places_.editTime);
        if (!clip || !places_.showsRecording) return;
        double const source = *project_.timeline.sourceTime(places_.editTime);
        for (auto const& track : *project_.redactions) {
            if (track.isEnabled || track.keyframes.empty() || !isSelected(track.id)) continue;
            bool const isThere = source >= track.start && source <= track.end;
            if (!isThere || (track.asset && *track.asset != clip->asset)) continue;
            add({.kind = ThingKind::redaction,
                 .id = track.id,
                 .rect = places_.onCanvas(track.areaAt(source)),
                 .isRejected = true});
        }
    }

    void addLoupes() {
        for (auto const& zoom : project_.zoomEvents) {
            if (!zoom.isLoupe() || !places_.showsRecording || !zoom.range().contains(places_.editTime)) continue;
            auto const centre =
                zoom.followsCursor && places_.pointer ? *places_.pointer : places_.onCanvas(zoom.center);
            add({.kind = ThingKind::loupe, .id = zoom.id, .rect = square(centre, zoom.loupeSize, places_.canvas)});
        }
    }

    void addCamera() {
        if (!places_.camera || places_.camera->isPane) return;
        auto const* move = moveInForce(project_, places_.editTime);
        add({.kind = ThingKind::camera, .id = move ? move->id : UUID(), .rect = places_.camera->rect});
    }

    void addDivider() {
        if (!places_.divider) return;
        auto const& rect = places_.divider->rect;
        auto const middle = rect.center();
        FilmThing divider{
            .kind = ThingKind::divider, .rect = rect, .from = {rect.x, middle.y}, .to = {rect.maxX(), middle.y}};
        if (places_.divider->isUpright()) {
            divider.from = {middle.x, rect.y};
            divider.to = {middle.x, rect.maxY()};
        }
        add(divider);
    }

    void addOverlays(ThingKind kind) {
        for (auto const& place : places_.overlays) {
            auto const* overlay = tavaro::find(project_.overlays, place.id);
            if (!overlay) continue;
            auto const& content = overlay->kind.content;
            FilmThing thing{.kind = ThingKind::text, .id = place.id, .rect = place.rect};
            if (auto const* arrow = std::get_if<OverlayKind::Arrow>(&content)) {
                thing = {.kind = ThingKind::arrow, .id = place.id, .from = arrow->from, .to = arrow->to};
                thing.rect = around(arrow->from, arrow->to);
            } else if (std::visit(
                           [](auto const& each) {
                               return requires { each.rect; };
                           },
                           content)) {
                thing.kind = ThingKind::area;
            }
            if (thing.kind == kind) add(thing);
        }
    }

    DemoProject const& project_;
    FramePlaces const& places_;
    ThingsWanted const& wanted_;
    std::vector<FilmThing> things_;
};

/// Calls `visit` with the text of that item, where it has one.
template<class Project, class Visit> void visitText(Project& project, UUID const& id, Visit visit) {
    for (auto& overlay : project.overlays) {
        if (overlay.id != id) continue;
        std::visit(
            [&](auto& content) {
                if constexpr (requires { content.text; }) visit(content.text);
            },
            overlay.kind.content);
    }
    for (auto& cue : project.captions.cues) {
        if (cue.id == id) visit(cue.text);
    }
}

}

FilmThing movedBy(FilmThing thing, UnitPoint2 by) {
    if (thing.kind == ThingKind::divider) (thing.isUpright() ? by.y : by.x) = 0;
    for (auto* point : {&thing.from, &thing.to}) *point = {point->x + by.x, point->y + by.y};
    thing.rect.x += by.x;
    thing.rect.y += by.y;
    return thing;
}

std::vector<FilmThing> thingsOf(DemoProject const& project, FramePlaces const& places, ThingsWanted const& wanted) {
    return Finder(project, places, wanted).find();
}

CameraMove const* moveInForce(DemoProject const& project, double editTime) {
    CameraMove const* latest = nullptr;
    for (auto const& move : project.cameraMoves) {
        if (move.time <= editTime && (!latest || move.time >= latest->time)) latest = &move;
    }
    return latest;
}

std::string nameOf(DemoProject const& project, FilmThing const& thing) {
    if (thing.kind == ThingKind::camera) return "Camera";
    if (thing.kind == ThingKind::crop) return "Crop";
    if (thing.kind == ThingKind::divider) return "Divider of camera and screen";
    std::string name;
    visitItem(project, thing.id, [&](auto const& item) { name = titleOf(item); });
    return name;
}

std::string describe(DemoProject const& project, FilmThing const& thing) {
    auto const middle = thing.rect.center();
    return fmt::format("{}, at {:.0f} %, {:.0f} %", nameOf(project, thing), middle.x * 100, middle.y * 100);
}

std::optional<std::string> textOf(DemoProject const& project, FilmThing const& thing) {
    std::optional<std::string> found;
    if (thing.kind == ThingKind::text || thing.kind == ThingKind::caption)
        visitText(project, thing.id, [&](std::string const& text) { found = text; });
    return found;
}

void setText(DemoProject& project, FilmThing const& thing, std::string const& text) {
    if (thing.kind == ThingKind::caption) return setCaptionText(project, thing.id, text);
    visitText(project, thing.id, [&](std::string& each) { each = text; });
}

}
