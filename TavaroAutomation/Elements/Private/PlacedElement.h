#pragma once

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroAutomation/Elements/Private/AccessibleTree.h>
#include <TavaroAutomation/Elements/UIElement.h>

#include <vector>

namespace tavaro::atspi {

/// How the places that a program tells become places on the screen: scaled, then moved.
struct Placement {
    double scale = 1;
    double dx = 0;
    double dy = 0;

    UIRect onScreen(Extents const& extents) const;
    /// As the program says it.
    UIPoint inProgram(UIPoint const& point) const { return {(point.x - dx) / scale, (point.y - dy) / scale}; }
    bool operator==(Placement const&) const = default;
};

/// An element, and what is needed to go there.
struct PlacedElement {
    UIElement element;
    Address address;
    Address root; // the window's own
    Toolkit toolkit = Toolkit::other;
    Role ownRole{};      // as its program calls it
    std::string ownName; // empty where its title is a label's or another text
    Placement placement;
    xcb_window_t window = XCB_NONE; // whose contents it is among
    bool isInPopup = false;         // of an open menu or list
    bool isInMenu = false;          // also of one that Java draws within its window
    UIRect shownPart;               // of its frame; where it is scrolled away, the part of what scrolls it
};

/// What people can click in those windows, windows from the front. What a program takes for showing is not believed:
/// an element has a size, lies in what holds it, in a window and on the screen, and no other window of its program
/// covers it. Whether a widget of its own window does, is not asked of each: see `coverOf`.
std::vector<PlacedElement> placedElements(AccessibleTree const& tree, std::vector<x11::OpenWindow> const& windows,
                                          UIRect const& screen);

/// The id of an element: the same as long as program, object, role and title are.
std::string elementID(Address const& address, std::string_view role, std::string_view title);

}
