#pragma once

#include <TavaroAutomation/Driving/Private/ApplicationElements.h>
#include <TavaroAutomation/Driving/UIRequests.h>

#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace tavaro {

enum class Purpose { click, scroll };

/// An element that the pointer can go to.
struct FoundTarget {
    UITarget wanted;
    Purpose purpose = Purpose::click;
    OpenApplication application;
    atspi::PlacedElement placed;

    UIPoint point() const { return placed.shownPart.center(); }
};

/// Finds what agents and scripts name, in the shape in which it can be used. One thread.
class TargetSearch {
public:
    TargetSearch(x11::Connection& connection, std::string const& display)
        : connection_(connection)
        , display_(display)
        , applications_(connection, display) {}

    OpenApplication application(std::string const& app) { return applications_.find(app); }
    /// What is in the application's windows; asked again while a program that has just started says nothing.
    UIElementListing list(std::string const& app, std::stop_token const& stop);
    /// The element, with its window in front and no menu in the way. What is not there yet may come: a page's contents
    /// are later than its window. Throws `AutomationError` with a sentence for what is not there, disabled or hidden.
    FoundTarget find(UITarget const& target, Purpose purpose, std::stop_token const& stop);
    /// Where to go for it now. What was made anew meanwhile is found again. Throws `AutomationError` where it is gone,
    /// and where its program does not answer.
    UIPoint placeOf(FoundTarget& target, std::stop_token const& stop);
    /// Where its top left corner is now, also where it is scrolled away; nothing where that is not known any more.
    std::optional<UIPoint> cornerOf(FoundTarget const& target, std::stop_token const& stop);
    /// Throws `AutomationError` where a click would not go to a window of the target's application, or to a dialog.
    void expectWindowUnderPointer(FoundTarget const& target, std::stop_token const& stop);
    /// Throws `AutomationError` where another widget of its own window is at that point.
    void expectNotCovered(FoundTarget const& target, UIPoint const& point, std::stop_token const& stop);

private:
    x11::OpenWindow windowUnderPointer();
    FoundTarget look(UITarget const& target, Purpose purpose, std::stop_token const& stop);
    void lookUntilVisible(FoundTarget& target, std::stop_token const& stop);
    FoundTarget foundAgain(FoundTarget const& target, std::stop_token const& stop);
    void expectNoDialog(FoundTarget const& target);
    bool closeMenus(FoundTarget const& target, std::stop_token const& stop);
    bool bringToFront(FoundTarget const& target, std::stop_token const& stop);
    bool bringOnDisplay(FoundTarget const& target, std::stop_token const& stop);

    x11::Connection& connection_;
    std::string const display_;
    ApplicationElements applications_;
    ApplicationListing listing_; // the last that was looked at
};

}
