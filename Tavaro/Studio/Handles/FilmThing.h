#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct CameraMove;
struct DemoProject;
struct FramePlaces;

enum class ThingKind { zoom, redaction, area, loupe, camera, divider, arrow, text, caption, crop };

constexpr std::array<std::string_view, 10> namesOf(ThingKind) {
    return {"zoom", "redaction", "area", "loupe", "camera", "divider", "arrow", "text", "caption", "crop"};
}

/// What can be taken hold of on a picture of the film. Places are shares of the canvas.
struct FilmThing {
    ThingKind kind = ThingKind::text;
    UUID id;             // of its item; of the camera, the move that put it there, if one did; of crop, divider none
    NormalizedRect rect; // of an arrow, around its ends
    UnitPoint2 from, to; // of an arrow; of a divider, its ends
    bool isRejected = false; // of a redaction: it hides nothing

    /// Of a divider: whether it goes across, between what stands side by side.
    bool isUpright() const { return from.x == to.x; }

    bool isSame(FilmThing const& other) const { return kind == other.kind && id == other.id; }
    bool operator==(FilmThing const&) const = default;
};

/// As far as it goes that way: a divider goes one way only.
FilmThing movedBy(FilmThing thing, UnitPoint2 by);

/// Which things there are besides those that the frame shows.
struct ThingsWanted {
    std::span<UUID const> selection; // the zoom among it is a thing, and a redaction that is rejected
    bool withCrop = false;           // the crop is the only thing
};

/// The things of a frame, the topmost last.
std::vector<FilmThing> thingsOf(DemoProject const& project, FramePlaces const& places, ThingsWanted const& wanted);

/// The move that put the camera where it is at that time of the edit; null where none did.
CameraMove const* moveInForce(DemoProject const& project, double editTime);

/// "Title “Hello”"; "Camera".
std::string nameOf(DemoProject const& project, FilmThing const& thing);
/// With where its middle is: "Title “Hello”, at 40 %, 12 %".
std::string describe(DemoProject const& project, FilmThing const& thing);

/// The text that can be edited where it is shown; none of a thing without one.
std::optional<std::string> textOf(DemoProject const& project, FilmThing const& thing);
void setText(DemoProject& project, FilmThing const& thing, std::string const& text);

}
