#pragma once

#include <Tavaro/Studio/Timeline/LaneItem.h>

#include <TavaroCore/Values/TimeRange.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct AudioTrack;
struct DemoProject;
struct ItemPlace;

/// The boxes of a lane. Of sound, those of one track: see `soundItems`.
std::vector<LaneItem> laneItems(DemoProject const& project, LaneKind kind);
std::vector<LaneItem> soundItems(AudioTrack const& track);

/// The one box of an item that can be edited by itself, and the lane that it is on.
struct LaneBoxOfItem {
    LaneKind lane = LaneKind::zooms;
    LaneItem item;
};
LaneBoxOfItem laneItem(DemoProject const& project, ItemPlace const& place);

/// The fields of the document that the lanes of a kind are made of.
std::span<std::string_view const> fieldsOf(LaneKind kind);

/// The whole output on the timeline's clock: cards before the film are before 0.
TimeRange presentationRange(DemoProject const& project);

/// What stands at the lane's head: "Zooms", "Microphone".
std::string laneName(LaneKind kind);
std::string laneName(AudioTrack const& track);

}
