#pragma once

#include <TavaroAutomation/Elements/Private/AccessibilityBus.h>
#include <TavaroAutomation/Elements/Private/Toolkit.h>

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro::atspi {

/// A widget as its program tells of it.
struct AccessibleNode {
    Address address;
    int parent = -1; // index in the tree
    Role role{};     // of a label that can be chosen from a list: a row
    Role ownRole{};  // as its program says it
    States states;
    Extents extents;
    std::string name;
    std::string title; // beside the name: of a label, the description, the placeholder
    bool isSearch = false;
    bool isOfCrowd = false;      // its parent was not asked for all its children
    std::optional<int> place;    // among the children of its parent, where it is of a crowd and its program says it
    bool isScrolledAway = false; // the program says that it does not show, though it is laid out
    std::vector<int> children;
};

/// The widgets of one program that may show, parents before children; roots have no parent.
struct AccessibleTree {
    Toolkit toolkit = Toolkit::other;
    std::vector<AccessibleNode> nodes;
    bool isComplete = true; // all that shows, and what is scrolled away as far as its program lays it out
};

struct WalkLimits {
    Deadline deadline;
    std::stop_token stop;
    std::optional<Extents> screen; // nothing beyond is looked for
};

/// Walks the widgets below the program's root, level by level with many questions under way: first what shows, then
/// what is scrolled away; nothing that is closed. It asks nobody for more children than a screen can show: a sheet says
/// that it has two billion, and hangs when it is asked for them; of such it takes what shows. What was typed is not
/// read.
AccessibleTree walkTree(AccessibilityBus& bus, Address const& program, WalkLimits const& limits);

}
