#pragma once

#include <array>
#include <span>
#include <string_view>

namespace tavaro {

/// What a context menu is of.
enum class MenuPlace {
    film, // the picture
    clip,
    item,     // anything else on the timeline
    timeline, // where nothing is
};

constexpr std::array<std::string_view, 4> namesOf(MenuPlace) { return {"film", "clip", "item", "timeline"}; }

/// The names of the editor's commands that fit there; one with a "-" before it begins a group.
std::span<char const* const> contextMenu(MenuPlace place);

}
