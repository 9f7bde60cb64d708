#include "ScriptTake.h"

#include <algorithm>
#include <fmt/format.h>

namespace tavaro {

ScriptTake::ScriptTake(double seconds, DemoMode mode) {
    project.mode = mode;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    project.assetDurations["screen.mp4"] = seconds;
}

ScriptTake& ScriptTake::click(double t, UnitPoint2 position) {
    project.metadata.edit().clicks.push_back({.t = t, .position = position});
    return *this;
}

ScriptTake& ScriptTake::drag(double t, double end) {
    project.metadata.edit().clicks.push_back({.t = t, .position = {0.4, 0.4}, .isDrag = true, .dragEnd = end});
    return *this;
}

ScriptTake& ScriptTake::type(double t, std::string_view text) {
    for (char const c : text) {
        std::string const key = c == '\n' ? "↩" : c == '\t' ? "⇥" : c == ' ' ? "Space" : std::string(1, c);
        project.metadata.edit().keystrokes.push_back({.t = t, .keys = {key}});
        t += 0.2;
    }
    return *this;
}

ScriptTake& ScriptTake::press(double t, std::string_view keys) {
    KeystrokeEvent stroke{.t = t, .isShortcut = true};
    for (std::size_t at = 0; at < keys.size();) {
        auto const end = std::min(keys.find(' ', at), keys.size());
        stroke.keys.emplace_back(keys.substr(at, end - at));
        at = end + 1;
    }
    project.metadata.edit().keystrokes.push_back(stroke);
    return *this;
}

ScriptTake& ScriptTake::app(double t, double end, std::string const& name, std::string const& bundleID) {
    project.metadata.edit().appSpans.push_back({t, end - t, bundleID, name});
    return *this;
}

DemoProject ScriptTake::film() const {
    auto film = project;
    std::ranges::stable_sort(film.metadata.edit().clicks, {}, &ClickEvent::t);
    std::ranges::stable_sort(film.metadata.edit().keystrokes, {}, &KeystrokeEvent::t);
    return film;
}

std::string drawn(std::vector<AutoDirectorScript::Beat> const& beats) {
    std::string text;
    for (auto const& beat : beats)
        text += fmt::format("{}{}@{:g}", text.empty() ? "" : " ", nameOf(beat.kind), beat.time);
    return text;
}

}
