#include <TavaroAutomation/Elements/Private/WindowScales.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavaro::atspi {

namespace {

constexpr double smallest = 0.5, largest = 4;

/// Of a window the program may mean its contents or its frame.
std::array<UIRect, 2> meanings(x11::OpenWindow const& window) { return {window.contents, window.frame}; }

}

double sizeDifference(Extents const& extents, double scale, UIRect const& rect) {
    return std::abs(extents.width * scale - rect.width) + std::abs(extents.height * scale - rect.height);
}

Extents windowExtents(AccessibleTree const& tree, AccessibleNode const& root) {
    for (int const child : root.children) {
        auto const& inside = tree.nodes[static_cast<std::size_t>(child)];
        if (inside.role == Role::rootPane) return inside.extents;
    }
    return root.extents;
}

WindowScales::WindowScales(AccessibleTree const& tree, std::vector<x11::OpenWindow> const& windows)
    : scales_{1, 1.25, 1.5, 1.75, 2, 3} {
    if (habitsOf(tree.toolkit).hasWholeScales) return;
    for (auto const& node : tree.nodes) {
        if (node.parent < 0) addUnusual(windowExtents(tree, node), windows);
    }
}

void WindowScales::addUnusual(Extents const& root, std::vector<x11::OpenWindow> const& windows) {
    auto const fits = [&](auto const& window) { return bestFit(root, window).difference <= rounding; };
    if (root.isEmpty() || std::ranges::any_of(windows, fits)) return;
    for (auto const& window : windows) {
        if (window.isPopup) continue; // most have the shape of another
        for (auto const& rect : meanings(window)) {
            double const scale = (rect.width + rect.height) / (root.width + root.height);
            bool const isSameShape = sizeDifference(root, scale, rect) <= rounding * scale;
            if (isSameShape && scale >= smallest && scale <= largest) scales_.push_back(scale);
        }
    }
}

WindowFit WindowScales::bestFit(Extents const& root, x11::OpenWindow const& window) const {
    WindowFit best{.rect = window.contents};
    for (double const scale : scales_) {
        for (auto const& rect : meanings(window)) {
            double const difference = sizeDifference(root, scale, rect);
            if (difference < best.difference) best = {.difference = difference, .scale = scale, .rect = rect};
        }
    }
    return best;
}

}
