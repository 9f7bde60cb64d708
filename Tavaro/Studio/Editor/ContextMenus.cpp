#include <Tavaro/Studio/Editor/ContextMenus.h>

namespace tavaro {

namespace {

constexpr std::array film{"addZoom",     "addLoupe",       "-addTitle",  "addCallout",
                          "addArrow",    "addBox",         "addCaption", "-addRedaction",
                          "addKeyframe", "removeKeyframe", "addScene",   "-polish",
                          "-copyFrame",  "saveFrame",      "-undo",      "redo"};
constexpr std::array clip{"split", "trimStart",  "trimEnd", "-changeSpeed", "speedUp", "slowDown", "holdFrame",
                          "mute",  "-duplicate", "cut",     "copy",         "paste",   "delete"};
constexpr std::array item{"cut", "copy", "paste", "duplicate", "-delete"};
constexpr std::array timeline{"paste",        "selectAll",   "-addZoom",   "addTitle",       "addCaption",
                              "addRedaction", "addScene",    "-markStart", "markEnd",        "cutRange",
                              "keepRange",    "changeSpeed", "clearRange", "-toggleSnapping"};

}

std::span<char const* const> contextMenu(MenuPlace place) {
    switch (place) {
    case MenuPlace::film: return film;
    case MenuPlace::clip: return clip;
    case MenuPlace::item: return item;
    case MenuPlace::timeline: return timeline;
    }
    return {};
}

}
