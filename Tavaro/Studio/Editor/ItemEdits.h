#pragma once

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <vector>

/// Edits of the items that an editor has selected. Times are output seconds; identities that the document does not
/// have are passed over.
namespace tavaro {

/// Takes clips out of the film with everything over them, and the other items off it.
void removeItems(DemoProject& project, std::span<UUID const> items);

/// Moves items by so many seconds, as far as all of them stay inside the film. Clips keep their places: `moveClip`.
/// `at`: of what the film shows several times, the place nearest to that time is meant. The seconds that they moved.
double moveItems(DemoProject& project, std::span<UUID const> items, double by, double at = 0);

/// Moves one edge of an item to a time, or as near as its length, its media and the film allow. Clips are trimmed, with
/// everything behind them moving along; a point in time is moved itself.
void moveItemEdge(DemoProject& project, UUID const& item, ClipEdge edge, double to, double at = 0);

/// Shows a clip somewhere else: before the clip that begins nearest to that time, or at the end. Items that lie over it
/// go with it, and keep their identities.
void moveClip(DemoProject& project, UUID const& clip, double to);

/// What is copied: a document with nothing but these items, which begins at 0. With clips come the sounds that were
/// recorded with them.
DemoProject copiedItems(DemoProject const& project, std::span<UUID const> items);
/// Adds copied items at a time, with identities of their own, which are returned. Clips are inserted: what is there
/// moves later.
std::vector<UUID> pasteItems(DemoProject& project, DemoProject const& copied, double at);

/// The media files that copied items are made of.
std::set<std::string> mediaOf(DemoProject const& copied);

/// New items as they are at first, at a time: their identities.
UUID addZoom(DemoProject& project, double at, ZoomStyle style);
UUID addOverlay(DemoProject& project, double at, std::string_view kind);
UUID addCaption(DemoProject& project, double at);
UUID addScene(DemoProject& project, double at);
UUID addCameraMove(DemoProject& project, double at);
/// Until the end of the clip that is shown there. None where no recording is shown.
std::optional<UUID> addRedaction(DemoProject& project, double at);

/// Whether an area that somebody hid is there at a time of the film, so that it can get a keyframe, or has one. Those
/// of a finding are the scan's.
enum class KeyframePlace { none, free, taken };
KeyframePlace keyframePlace(DemoProject const& project, UUID const& redaction, double at);
/// From there on it is moved from its place at that time, and no longer as a whole.
void addKeyframe(DemoProject& project, UUID const& redaction, double at);
/// Its last one stays.
void removeKeyframe(DemoProject& project, UUID const& redaction, double at);

}
