#include <TavaroCapture/Events/Private/CursorNames.h>

#include <algorithm>
#include <iterator>

namespace tavaro {

namespace {

struct NamedCursor {
    std::string_view name;
    CursorKind kind;
};

constexpr NamedCursor named[] = {
    {"xterm", CursorKind::iBeam},
    {"text", CursorKind::iBeam},
    {"ibeam", CursorKind::iBeam},
    {"vertical-text", CursorKind::text},
    {"pointer", CursorKind::pointingHand},
    {"hand", CursorKind::pointingHand},
    {"hand1", CursorKind::pointingHand},
    {"hand2", CursorKind::pointingHand},
    {"pointing_hand", CursorKind::pointingHand},
    {"pointinghand", CursorKind::pointingHand},
    {"grab", CursorKind::openHand},
    {"openhand", CursorKind::openHand},
    {"open_hand", CursorKind::openHand},
    {"fleur", CursorKind::openHand},
    {"all-scroll", CursorKind::openHand},
    {"move", CursorKind::openHand},
    {"size_all", CursorKind::openHand},
    {"grabbing", CursorKind::closedHand},
    {"closedhand", CursorKind::closedHand},
    {"closed_hand", CursorKind::closedHand},
    {"dnd-move", CursorKind::closedHand},
    {"dnd-none", CursorKind::closedHand},
    {"sb_h_double_arrow", CursorKind::resizeLeftRight},
    {"h_double_arrow", CursorKind::resizeLeftRight},
    {"ew-resize", CursorKind::resizeLeftRight},
    {"e-resize", CursorKind::resizeLeftRight},
    {"w-resize", CursorKind::resizeLeftRight},
    {"col-resize", CursorKind::resizeLeftRight},
    {"left_side", CursorKind::resizeLeftRight},
    {"right_side", CursorKind::resizeLeftRight},
    {"size_hor", CursorKind::resizeLeftRight},
    {"split_h", CursorKind::resizeLeftRight},
    {"sb_v_double_arrow", CursorKind::resizeUpDown},
    {"v_double_arrow", CursorKind::resizeUpDown},
    {"double_arrow", CursorKind::resizeUpDown},
    {"ns-resize", CursorKind::resizeUpDown},
    {"n-resize", CursorKind::resizeUpDown},
    {"s-resize", CursorKind::resizeUpDown},
    {"row-resize", CursorKind::resizeUpDown},
    {"top_side", CursorKind::resizeUpDown},
    {"bottom_side", CursorKind::resizeUpDown},
    {"size_ver", CursorKind::resizeUpDown},
    {"split_v", CursorKind::resizeUpDown},
    {"crosshair", CursorKind::crosshair},
    {"cross", CursorKind::crosshair},
    {"cross_reverse", CursorKind::crosshair},
    {"diamond_cross", CursorKind::crosshair},
    {"tcross", CursorKind::crosshair},
    {"cell", CursorKind::crosshair},
    {"plus", CursorKind::crosshair},
};

}

CursorKind cursorKind(std::string_view name) {
    auto const* const found = std::find_if(std::begin(named), std::end(named),
                                           [&](NamedCursor const& cursor) { return cursor.name == name; });
    return found == std::end(named) ? CursorKind::arrow : found->kind;
}

}
