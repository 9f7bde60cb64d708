#pragma once

#include <TavaroAutomation/Elements/Private/AccessibilityBus.h>

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
    bool isFoundByPoint = false; // its parent was not asked for its children
    bool isScrolledAway = false; // the program says that it does not show, though it is laid out
    std::vector<int> children;
};

/// The widgets of one program that may show, parents before children; roots have no parent.
struct AccessibleTree {
    Toolkit toolkit = Toolkit::other;
    std::vector<AccessibleNode> nodes;
    bool isComplete = true;
};

/// Walks the widgets below the program's root, level by level with many questions under way, and leaves out what does
/// not show. It asks nobody for more children than a screen can show: a sheet says that it has two billion, and hangs
/// when it is asked for them; of such it takes what lies under a grid of points. Nothing that was typed is read.
AccessibleTree walkTree(AccessibilityBus& bus, Address const& program, Deadline deadline,
                        std::stop_token const& stop = {});

}
