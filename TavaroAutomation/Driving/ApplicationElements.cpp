#include <TavaroAutomation/Driving/Private/ApplicationElements.h>

#include <TavaroAutomation/Applications/Private/WindowControl.h>
#include <TavaroAutomation/Elements/Private/ElementTitle.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCapture/Sources/InstalledEntries.h>
#include <TavaroCore/Errors/Excerpt.h>

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using atspi::AccessibilityBus;
using atspi::Address;

constexpr auto longestWalk = 2s;
constexpr auto longestAnswer = 500ms;
constexpr auto longestHitTest = 40ms; // a click that waits longer is seen to hesitate

std::set<int> processesOf(std::vector<x11::OpenWindow> const& windows) {
    std::set<int> result;
    for (auto const& window : windows) {
        if (window.pid != 0) result.insert(window.pid);
    }
    return result;
}

/// Asked anew, for displays come and go.
UIRect screenOf(x11::Connection& connection) {
    auto const geometry = connection.ask<xcb_get_geometry, xcb_get_geometry_reply>(connection.root());
    if (!geometry) return {};
    return {0, 0, static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

std::vector<x11::OpenWindow> ofProcesses(std::vector<x11::OpenWindow> const& windows, std::set<int> const& processes) {
    std::vector<x11::OpenWindow> result;
    std::ranges::copy_if(windows, std::back_inserter(result),
                         [&](auto const& each) { return each.pid != 0 && processes.contains(each.pid); });
    return result;
}

}

std::vector<UIElement> ApplicationListing::asElements() const {
    std::vector<UIElement> result;
    for (auto const& placed : elements) result.push_back(placed.element);
    return result;
}

AccessibilityBus& ApplicationElements::bus() {
    if (!bus_ || !bus_->isOpen()) bus_ = std::make_unique<AccessibilityBus>(display_);
    return *bus_;
}

OpenApplication ApplicationElements::find(std::string const& app, std::stop_token const& stop) {
    auto const all = x11::openWindows(connection_);
    auto const entries = InstalledEntries::usual();
    auto const* const entry = entryNamed(*entries, app, all);
    auto own = windowsOf(all, entry, app);
    if (!frontWindow(own)) own = windowsOf(all, nullptr, app);
    auto const name = entry ? entry->identity.name : excerpt(app);
    if (auto const front = frontWindow(own))
        return {.asked = app, .name = name, .windows = std::move(own), .front = *front};
    if (auto found = findByOwnName(app, all, stop)) return *found;
    throw AutomationError(AutomationError::Kind::noWindow,
                          fmt::format("{} shows no window. Open it with ui_open_app.", name));
}

/// What a program calls itself to those who ask for its widgets may be neither on its entry nor on its windows.
std::optional<OpenApplication> ApplicationElements::findByOwnName(std::string const& app,
                                                                  std::vector<x11::OpenWindow> const& windows,
                                                                  std::stop_token const& stop) {
    std::set<int> processes; // a program may run several times, and show windows once
    try {
        auto& bus = this->bus();
        auto const ask = [&](Address const& program) {
            bus.name(program, [&, program](auto const& name) {
                if (!name || !isSameName(*name, app)) return;
                bus.processOf(program.bus, [&](auto const& process) { processes.insert(process.value_or(0)); });
            });
        };
        bus.programs([&](auto const& programs) {
            for (auto const& program : programs.value_or(std::vector<Address>{})) ask(program);
        });
        bus.run(Clock::now() + longestAnswer, stop);
    } catch (AutomationError const&) {
        return std::nullopt; // nobody tells of widgets, so nobody has a name of that kind
    }
    expectNotStopped(stop);
    auto own = ofProcesses(windows, processes);
    auto const front = frontWindow(own);
    if (!front) return std::nullopt;
    return OpenApplication{.asked = app, .name = excerpt(app), .windows = std::move(own), .front = *front};
}

std::vector<Address> ApplicationElements::programsOf(OpenApplication const& application, std::stop_token const& stop,
                                                     atspi::Deadline deadline) {
    auto const processes = processesOf(application.windows);
    std::vector<Address> result;
    bus().programs([&](auto const& programs) {
        for (auto const& program : programs.value_or(std::vector<Address>{})) {
            bus().processOf(program.bus, [&, program](auto const& process) {
                if (process && processes.contains(*process)) result.push_back(program);
            });
        }
    });
    bus().runOnBus(deadline, stop);
    return result;
}

ApplicationListing ApplicationElements::list(OpenApplication const& application, std::stop_token const& stop) {
    auto const deadline = Clock::now() + longestWalk;
    ApplicationListing listing;
    auto const screen = screenOf(connection_);
    for (auto const& program : programsOf(application, stop, deadline)) {
        auto const tree =
            walkTree(bus(), program,
                     {.deadline = deadline,
                      .stop = stop,
                      .screen = atspi::Extents{0, 0, static_cast<int>(screen.width), static_cast<int>(screen.height)}});
        auto placed = placedElements(tree, application.windows, screen);
        listing.isComplete = listing.isComplete && tree.isComplete;
        listing.saysAnything = listing.saysAnything || !tree.nodes.empty();
        std::ranges::move(placed, std::back_inserter(listing.elements));
    }
    expectNotStopped(stop);
    return listing;
}

ElementPlace ApplicationElements::placeOf(atspi::PlacedElement const& element, std::stop_token const& stop) {
    std::optional<UIRect> frame;
    bool isSame = true;
    auto const& address = element.address;
    bus().states(address,
                 [&](auto const& states) { isSame = isSame && states && !states->has(atspi::State::defunct); });
    bus().role(address, [&](auto const& role) { isSame = isSame && role == element.ownRole; });
    bus().name(address, [&](auto const& name) {
        isSame = isSame && name && readableTitle(*name, element.toolkit) == element.ownName;
    });
    bus().extents(address, habitsOf(element.toolkit).origin, [&](auto const& extents) {
        if (extents && !extents->isEmpty()) frame = element.placement.onScreen(*extents);
    });
    auto const outcome = bus().run(Clock::now() + longestAnswer, stop);
    expectNotStopped(stop);
    if (outcome != AccessibilityBus::Outcome::allAnswered) return {.presence = ElementPlace::Presence::silent};
    if (!isSame || !frame) return {};
    return {.presence = ElementPlace::Presence::there, .frame = *frame};
}

std::optional<atspi::Cover> ApplicationElements::coverOf(atspi::PlacedElement const& element, UIPoint const& point,
                                                         std::stop_token const& stop) {
    auto const deadline = Clock::now() + longestHitTest;
    return atspi::coverOf(bus(), element, point, deadline, stop);
}

}
