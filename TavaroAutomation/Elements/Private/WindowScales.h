#pragma once

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroAutomation/Elements/Private/AccessibleTree.h>

#include <limits>
#include <vector>

namespace tavaro::atspi {

/// Points that a program's sizes may be off by.
inline constexpr double rounding = 3;

/// Of both sides, in pixels.
double sizeDifference(Extents const& extents, double scale, UIRect const& rect);

/// The extents of a window. Java knows better where its contents are than where the window is.
Extents windowExtents(AccessibleTree const& tree, AccessibleNode const& root);

/// How well a window that a program tells of is one that is on the screen.
struct WindowFit {
    double difference = std::numeric_limits<double>::infinity();
    double scale = 1;
    UIRect rect; // what the program means: the contents or the frame
};

/// How many pixels one of a program's points may be: the usual scales, and those at which a window of it that fits at
/// none of them has the shape of one on the screen.
class WindowScales {
public:
    WindowScales(AccessibleTree const& tree, std::vector<x11::OpenWindow> const& windows);

    WindowFit bestFit(Extents const& root, x11::OpenWindow const& window) const;

private:
    void addUnusual(Extents const& root, std::vector<x11::OpenWindow> const& windows);

    std::vector<double> scales_;
};

}
