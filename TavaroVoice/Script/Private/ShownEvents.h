#pragma once

#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/TimeRange.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavaro {

struct DemoProject;

/// A stretch of the film in which one application is in front.
struct ShownApp {
    TimeRange range; // output seconds
    std::string name;
};

/// What a log says, where the film shows it.
struct ShownEvent {
    struct Click {
        UnitPoint2 position;
        bool isDrag = false;
    };
    struct Key {
        enum class Use { text, tab, enter, other };
        Use use = Use::other;
    };
    struct Shortcut {
        std::vector<std::string> keys;
    };
    struct Switch {
        bool isReturn = false;
    };

    double start = 0; // output seconds
    double end = 0;
    std::string app; // in front, where that is known
    std::variant<Click, Key, Shortcut, Switch> what;
};

/// The applications that are in front for a while, ascending; neighbours differ. Those of the desktop itself and
/// Tavaro count as the one before them.
std::vector<ShownApp> shownApps(DemoProject const& project);

/// Clicks, keys and switches of application, ascending in start.
std::vector<ShownEvent> shownEvents(DemoProject const& project);

}
