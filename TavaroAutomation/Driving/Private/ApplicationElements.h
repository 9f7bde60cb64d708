#pragma once

#include <TavaroAutomation/Applications/Private/ApplicationLookup.h>
#include <TavaroAutomation/Elements/Private/AccessibilityBus.h>
#include <TavaroAutomation/Elements/Private/HitTest.h>

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

/// An application that has windows now.
struct OpenApplication {
    std::string asked;                    // the name that it was found by
    std::string name;                     // as sentences call it
    std::vector<x11::OpenWindow> windows; // frontmost first, with its popups
    x11::OpenWindow front;
};

/// The elements of one application's windows.
struct ApplicationListing {
    std::vector<atspi::PlacedElement> elements;
    bool isComplete = true;
    bool saysAnything = false; // whether the program tells of its widgets at all

    std::vector<UIElement> asElements() const;
};

/// What has become of an element.
struct ElementPlace {
    enum class Presence { there, gone, silent };

    Presence presence = Presence::gone;
    UIRect frame; // where it is there
};

/// Asks programs for what is in their windows. One thread.
class ApplicationElements {
public:
    ApplicationElements(x11::Connection& connection, std::string display)
        : connection_(connection)
        , display_(std::move(display)) {}

    /// By any of its names. Throws `AutomationError` where it has no window.
    OpenApplication find(std::string const& app, std::stop_token const& stop = {});
    /// What its windows hold, two seconds at most. Throws `AutomationError` where programs cannot be asked.
    ApplicationListing list(OpenApplication const& application, std::stop_token const& stop);

    /// Where it is now, with that role and title still.
    ElementPlace placeOf(atspi::PlacedElement const& element, std::stop_token const& stop);
    /// What of its window is over it at that point, as far as its program says so at once.
    std::optional<atspi::Cover> coverOf(atspi::PlacedElement const& element, UIPoint const& point,
                                        std::stop_token const& stop);

private:
    atspi::AccessibilityBus& bus();
    std::vector<atspi::Address> programsOf(OpenApplication const& application, std::stop_token const& stop,
                                           atspi::Deadline deadline);
    std::optional<OpenApplication> findByOwnName(std::string const& app, std::vector<x11::OpenWindow> const& windows,
                                                 std::stop_token const& stop);

    x11::Connection& connection_;
    std::string const display_;
    std::unique_ptr<atspi::AccessibilityBus> bus_;
};

}
