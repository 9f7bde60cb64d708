#pragma once

#include <TavaroAutomation/Elements/UIElement.h>
#include <TavaroAutomation/Input/KeyCombo.h>
#include <TavaroAutomation/Input/UIMouseButton.h>
#include <TavaroAutomation/Values/UIRect.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// What an agent or a script means by a place: an element of an application by its title or id, else a point, else
/// where the pointer is.
struct UITarget {
    std::string app;
    std::string title;
    std::string role;    // of what has that title; any where empty
    std::string element; // an id
    std::optional<UIPoint> point;

    bool isElement() const { return !app.empty() && (!title.empty() || !element.empty()); }
};

struct UIElementsRequest {
    std::string app;
    std::string query; // what titles contain; all where empty
    std::size_t limit = 150;
};

struct UIClickRequest {
    UITarget target;
    UIMouseButton button = UIMouseButton::left;
    int count = 1;
    double glide = 0.7; // seconds that the pointer takes
    double hold = 1;    // seconds to wait afterwards
};

struct UIScrollRequest {
    UITarget target;
    double down = 0; // pixels; negative ones up
    double right = 0;
    double glide = 0.5;
    double hold = 1;
};

/// The text first, then the shortcuts in their order.
struct UIKeysRequest {
    std::string text;
    std::vector<std::string> keys;
    double hold = 0.5;
};

struct UIScreenshotRequest {
    std::string app;     // its front window; the main display where empty
    int maxWidth = 1280; // pixels of the longest edge
};

struct UIPicture {
    std::string png;
    std::string caption; // what it shows, and how its pixels become screen points
    UIRect frame;
    int width = 0;
    int height = 0;
};

/// Where it was clicked or scrolled, and on what where that is known.
struct UIActionReport {
    UIPoint point;
    std::optional<UIElement> element;
    double wentDown = 0; // pixels, of a scroll
    double wentRight = 0;
    bool isAtEnd = false; // nothing moved any more
    bool isSeen = true;   // false: how far it went is only reckoned
};

}
