#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>
#include <string>
#include <vector>

namespace tavaro {

/// An edit of one take of that length.
inline DemoProject projectOf(double seconds) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    project.assetDurations["screen.mp4"] = seconds;
    return project;
}

/// "0-2 2-4×3": from when to when each item lasts, and how fast it plays where that is not its own speed.
template<class Item> std::string spans(std::vector<Item> const& items) {
    std::string text;
    for (auto const& item : items) {
        text += fmt::format("{}{:.5g}-{:.5g}", text.empty() ? "" : " ", item.start, item.start + item.duration);
        if constexpr (requires { item.speed; }) {
            if (item.speed != 1) text += fmt::format("×{:g}", item.speed);
        }
    }
    return text;
}

}
