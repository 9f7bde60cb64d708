#include <TavaroAutomation/Driving/Private/TargetSearch.h>

#include <TavaroAutomation/Applications/Private/WindowControl.h>
#include <TavaroAutomation/Elements/Private/UIMatch.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/Typist.h>
#include <TavaroCore/Errors/Excerpt.h>

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <set>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using atspi::PlacedElement;

// How long after its window a program's widgets are there: a page's come 0.7 s later, a busy machine's more.
constexpr auto patience = 2500ms;
constexpr auto layingOut = 700ms;   // that a window takes which was an icon
constexpr auto closing = 500ms;     // that a menu takes on a busy machine
constexpr auto betweenLooks = 40ms; // a program that is asked without a pause gets nothing else done

std::string inQuotes(std::string_view title) { return fmt::format("“{}”", excerpt(title)); }

/// What a sentence calls an element.
std::string nameOf(UIElement const& element) {
    return element.title.empty() ? fmt::format("The {} {}", element.role, element.id) : inQuotes(element.title);
}

/// Whoever holds it gets all clicks: menus do that, and drags.
bool isPointerGrabbed(x11::Connection& connection) {
    auto const grab = connection.ask<xcb_grab_pointer, xcb_grab_pointer_reply>(
        std::uint8_t{0}, connection.root(), std::uint16_t{0}, std::uint8_t{XCB_GRAB_MODE_ASYNC},
        std::uint8_t{XCB_GRAB_MODE_ASYNC}, xcb_window_t{XCB_NONE}, xcb_cursor_t{XCB_NONE},
        xcb_timestamp_t{XCB_CURRENT_TIME});
    if (grab && grab->status == XCB_GRAB_STATUS_SUCCESS) {
        xcb_ungrab_pointer(connection.get(), XCB_CURRENT_TIME);
        connection.synchronize();
    }
    return grab && grab->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

[[noreturn]] void fail(AutomationError::Kind kind, std::string const& sentence) {
    throw AutomationError(kind, sentence);
}

/// Terminals, games; and programs that others started without asking them to.
std::string saysNothing(OpenApplication const& application) {
    return fmt::format("{} tells nothing of what is in its windows.", application.name);
}

[[noreturn]] void failMissing(UITarget const& target, OpenApplication const& application,
                              ApplicationListing const& listing) {
    if (!listing.isComplete && !listing.saysAnything)
        fail(AutomationError::Kind::noElements, application.name + " does not answer.");
    if (!target.element.empty()) {
        fail(AutomationError::Kind::noSuchElement,
             fmt::format("{} has no element {} any more — the window changed. Call ui_elements again.",
                         application.name, excerpt(target.element)));
    }
    auto sentence = fmt::format("Nothing titled {}{} is in {}.", inQuotes(target.title),
                                target.role.empty() ? "" : " with the role " + excerpt(target.role), application.name);
    std::vector<std::string> titles;
    for (auto const& title : UIMatch::suggestions(listing.asElements(), {.title = target.title}))
        titles.push_back(inQuotes(title));
    if (!titles.empty()) sentence += fmt::format(" Titles there include {}.", fmt::join(titles, ", "));
    if (!listing.saysAnything) sentence += " " + saysNothing(application);
    if (!listing.isComplete) sentence += " It did not tell of everything: try again.";
    fail(AutomationError::Kind::noSuchElement,
         sentence + " Custom-drawn areas aren't listed: use ui_screenshot and click by x and y.");
}

PlacedElement const* matching(UITarget const& target, ApplicationListing const& listing) {
    auto const& all = listing.elements;
    if (target.element.empty()) {
        auto const place = UIMatch::find(listing.asElements(), {.title = target.title, .role = target.role});
        if (!place) return nullptr;
        // What is meant may be among the elements that are missing.
        bool const isMeant = listing.isComplete || UIMatch::isSame(all[*place].element.title, target.title);
        return isMeant ? &all[*place] : nullptr;
    }
    auto const found =
        std::ranges::find_if(all, [&](PlacedElement const& each) { return each.element.id == target.element; });
    return found == all.end() ? nullptr : &*found;
}

/// The window that it is in; none of what is in a menu.
x11::OpenWindow const* windowOf(FoundTarget const& target) {
    auto const& windows = target.application.windows;
    auto const found = std::ranges::find(windows, target.placed.window, &x11::OpenWindow::window);
    return target.placed.isInPopup || found == windows.end() ? nullptr : &*found;
}

std::set<xcb_window_t> menusIn(ApplicationListing const& listing) {
    std::set<xcb_window_t> result;
    for (auto const& each : listing.elements) {
        if (each.isInPopup && each.element.isVisible && each.element.role == "MenuItem") result.insert(each.window);
    }
    return result;
}

}

UIElementListing TargetSearch::list(std::string const& app, std::stop_token const& stop) {
    OpenApplication application;
    x11::waitUntil(
        Clock::now() + patience, stop,
        [&] {
            application = applications_.find(app, stop);
            listing_ = applications_.list(application, stop);
            return !listing_.elements.empty() || !listing_.isComplete;
        },
        betweenLooks);
    if (!listing_.saysAnything && listing_.isComplete)
        fail(AutomationError::Kind::noElements, saysNothing(application) + " Use ui_screenshot and click by x and y.");
    return {.elements = listing_.asElements(), .count = listing_.elements.size(), .isComplete = listing_.isComplete};
}

FoundTarget TargetSearch::find(UITarget const& target, Purpose purpose, std::stop_token const& stop) {
    auto found = look(target, purpose, stop);
    // Each may change what shows, and where.
    if (closeMenus(found, stop)) found = look(target, purpose, stop);
    if (bringToFront(found, stop)) lookUntilVisible(found, stop);
    if (bringOnDisplay(found, stop)) lookUntilVisible(found, stop);
    if (purpose == Purpose::click) expectNoDialog(found);
    auto const& element = found.placed.element;
    if (purpose == Purpose::scroll) return found;
    if (!element.isEnabled) fail(AutomationError::Kind::disabled, nameOf(element) + " is disabled right now.");
    if (!element.isVisible) {
        fail(AutomationError::Kind::notShown,
             nameOf(element) + " is out of view: scroll to it with ui_scroll, or close what covers it, then click.");
    }
    return found;
}

/// A modal dialog takes the clicks for the window that it belongs to; with the keyboard, for all of its application's.
void TargetSearch::expectNoDialog(FoundTarget const& target) {
    auto const own = target.placed.window;
    if (target.placed.isInPopup) return;
    auto const active = x11::activeWindow(connection_);
    auto const isOfApplication = [&](x11::OpenWindow const& window) {
        return std::ranges::any_of(target.application.windows, [&](auto const& each) {
            return each.window == window.window || (each.pid != 0 && each.pid == window.pid);
        });
    };
    auto const blocks = [&](x11::OpenWindow const& window) {
        return window.isModal && !window.isMinimized && window.window != own &&
               (window.transientFor == own || (window.window == active && isOfApplication(window)));
    };
    auto const open = x11::openWindows(connection_);
    auto const dialog = std::ranges::find_if(open, blocks);
    if (dialog == open.end()) return;
    fail(AutomationError::Kind::notShown, fmt::format("{} is behind the dialog {}: answer that first.",
                                                      nameOf(target.placed.element), inQuotes(dialog->title)));
}

FoundTarget TargetSearch::look(UITarget const& target, Purpose purpose, std::stop_token const& stop) {
    OpenApplication application;
    PlacedElement const* found = nullptr;
    x11::waitUntil(
        Clock::now() + patience, stop,
        [&] {
            application = applications_.find(target.app, stop);
            listing_ = applications_.list(application, stop);
            found = matching(target, listing_);
            // An id is of a listing that was there; it does not come later. Who was too slow once is not faster soon.
            return found || !target.element.empty() || !listing_.isComplete;
        },
        betweenLooks);
    if (!found) failMissing(target, application, listing_);
    return {.wanted = target, .purpose = purpose, .application = std::move(application), .placed = *found};
}

void TargetSearch::lookUntilVisible(FoundTarget& target, std::stop_token const& stop) {
    x11::waitUntil(
        Clock::now() + layingOut, stop,
        [&] {
            target = look(target.wanted, target.purpose, stop);
            return target.placed.element.isVisible;
        },
        betweenLooks);
}

/// A menu that is open, of whichever program, takes every click beside it for itself, and one that is glided over opens
/// by itself and is closed by the click.
bool TargetSearch::closeMenus(FoundTarget const& target, std::stop_token const& stop) {
    if (target.placed.isInPopup || target.placed.isInMenu) return false;
    auto const menus = menusIn(listing_);
    auto const isOpen = [&] {
        return isPointerGrabbed(connection_) ||
               std::ranges::any_of(menus, [&](auto menu) { return x11::isViewable(connection_, menu); });
    };
    if (!isOpen()) return false;
    auto const popups = [&] { return std::ranges::count_if(x11::openWindows(connection_), &x11::OpenWindow::isPopup); };
    constexpr int mostLevels = 4;
    Typist typist(display_);
    for (int level = 0; level < mostLevels; ++level) {
        auto const before = popups();
        typist.press(parseShortcut("esc"), stop);
        // One level at a time: what is pressed too often goes to the window behind.
        x11::waitUntil(
            Clock::now() + closing, stop, [&] { return !isOpen() || popups() < before; }, x11::betweenLooksAtWindows);
        if (!isOpen()) return true;
    }
    fail(AutomationError::Kind::notShown,
         fmt::format("{} cannot be clicked while a menu or another program holds the pointer: close that, then click.",
                     nameOf(target.placed.element)));
}

bool TargetSearch::bringToFront(FoundTarget const& target, std::stop_token const& stop) {
    auto const* const window = windowOf(target);
    // To make a window active that has a menu open closes the menu.
    if (!window || (x11::activeWindow(connection_) == window->window && !window->isShaded)) return false;
    return x11::bringToFront(connection_, *window, stop);
}

/// A person moves a window to where its widgets can be reached; a wheel does not bring them.
bool TargetSearch::bringOnDisplay(FoundTarget const& target, std::stop_token const& stop) {
    auto const* const window = windowOf(target);
    auto const& element = target.placed.element;
    if (!window || element.isVisible || element.frame.intersection(window->contents).isEmpty()) return false;
    return x11::bringOnDisplay(connection_, *window, element.frame, stop);
}

UIPoint TargetSearch::placeOf(FoundTarget& target, std::stop_token const& stop) {
    if (!target.placed.element.isVisible) return target.point(); // what scrolls it stays where it is
    auto const now = applications_.placeOf(target.placed, stop);
    switch (now.presence) {
    case ElementPlace::Presence::there: break;
    case ElementPlace::Presence::gone: target = foundAgain(target, stop); return target.point();
    case ElementPlace::Presence::silent:
        fail(AutomationError::Kind::noElements,
             fmt::format("{} does not answer any more, so nothing was clicked.", target.application.name));
    }
    auto const point = target.point();
    auto const& before = target.placed.element.frame;
    return {now.frame.x + point.x - before.x, now.frame.y + point.y - before.y};
}

std::optional<UIPoint> TargetSearch::cornerOf(FoundTarget const& target, std::stop_token const& stop) {
    auto const now = applications_.placeOf(target.placed, stop);
    if (now.presence != ElementPlace::Presence::there) return std::nullopt;
    return UIPoint{now.frame.x, now.frame.y};
}

/// Programs make some of their widgets anew. What only resembles the target was not meant.
FoundTarget TargetSearch::foundAgain(FoundTarget const& target, std::stop_token const& stop) {
    auto again = find(target.wanted, target.purpose, stop);
    auto const& before = target.placed.element;
    auto const& now = again.placed.element;
    if (now.title != before.title || now.role != before.role) {
        fail(AutomationError::Kind::noSuchElement,
             nameOf(before) + " is gone: the window changed while the pointer went there. Call ui_elements again.");
    }
    return again;
}

void TargetSearch::expectNotCovered(FoundTarget const& target, UIPoint const& point, std::stop_token const& stop) {
    auto const cover = applications_.coverOf(target.placed, point, stop);
    if (!cover) return;
    auto const by = cover->title.empty() ? "something else in the window" : inQuotes(cover->title);
    fail(AutomationError::Kind::notShown,
         fmt::format("{} is covered by {}: close that, then click.", nameOf(target.placed.element), by));
}

/// The server knows who would get a click: windows may have any shape, and let clicks through.
x11::OpenWindow TargetSearch::windowUnderPointer() {
    auto const pointer = connection_.ask<xcb_query_pointer, xcb_query_pointer_reply>(connection_.root());
    x11::OpenWindow const unknown{.topLevel = pointer ? pointer->child : xcb_window_t{XCB_NONE}};
    return unknown.topLevel == XCB_NONE ? unknown : x11::openWindow(connection_, unknown.topLevel).value_or(unknown);
}

/// A tooltip goes when the pointer moves, but not at once.
void TargetSearch::expectWindowUnderPointer(FoundTarget const& target, std::stop_token const& stop) {
    x11::OpenWindow under;
    auto const isOwn = [&](x11::OpenWindow const& own) {
        return own.window == under.window || (own.pid != 0 && own.pid == under.pid);
    };
    bool const isThere = x11::waitUntil(
        Clock::now() + 1s, stop,
        [&] {
            under = windowUnderPointer();
            return under.topLevel == XCB_NONE || std::ranges::any_of(target.application.windows, isOwn);
        },
        betweenLooks);
    if (isThere && under.topLevel != XCB_NONE) {
        if (target.purpose == Purpose::click) expectNoDialog(target); // it may have come meanwhile
        return;
    }
    auto const name = nameOf(target.placed.element);
    auto const& other = under.application.name;
    if (under.topLevel == XCB_NONE) {
        fail(AutomationError::Kind::notShown,
             name + " is not there any more: its window was moved, minimised or closed.");
    }
    fail(AutomationError::Kind::notShown, other.empty() ? name + " is covered by another window."
                                                        : fmt::format("{} is covered by a window of {}.", name, other));
}

}
