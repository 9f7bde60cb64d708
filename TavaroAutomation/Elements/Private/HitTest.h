#pragma once

#include <TavaroAutomation/Elements/Private/AccessibilityBus.h>
#include <TavaroAutomation/Elements/Private/PlacedElement.h>

#include <optional>
#include <stop_token>
#include <string>

namespace tavaro::atspi {

/// What takes the clicks in place of an element.
struct Cover {
    std::string title; // as people read it; empty where nothing names it
};

/// Asks the element's program what is at that point of the screen: nothing where that is the element, something in it
/// or around it, or where the program does not say. Only toolkits that look as the pointer does are asked; GTK 3, Qt
/// and LibreOffice answer with the first widget of their list that extends there, whatever lies over it.
std::optional<Cover> coverOf(AccessibilityBus& bus, PlacedElement const& element, UIPoint const& point,
                             Deadline deadline, std::stop_token const& stop);

}
