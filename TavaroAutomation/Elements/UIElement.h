#pragma once

#include <TavaroAutomation/Values/UIRect.h>
#include <TavaroCore/Records/Fields.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tavaro {

/// Something in another application's windows that can be clicked or scrolled.
struct UIElement {
    std::string id;    // of this element with this role and title: another one has another
    std::string role;  // "Button", "MenuItem", "TextField"
    std::string title; // as people read it; empty where nothing names it
    UIRect frame;      // out of view: of what it is in, where its program says no more
    bool isEnabled = true;
    bool isVisible = true; // false: scrolled out of view, off the screen, or behind another window of its application

    static constexpr auto fields = std::tuple{field("id", &UIElement::id),
                                              field("role", &UIElement::role),
                                              field("title", &UIElement::title),
                                              field("frame", &UIElement::frame),
                                              field("enabled", &UIElement::isEnabled),
                                              field("visible", &UIElement::isVisible)};
    bool operator==(UIElement const&) const = default;
};
static_assert(listsEveryField<UIElement>);

/// What an application's windows hold now, as far as there was time to ask.
struct UIElementListing {
    std::vector<UIElement> elements; // windows from the front, each in reading order of its program
    std::size_t count = 0;           // with those that a limit leaves out
    bool isComplete = true;          // false: the program was too slow to say everything, or keeps some of it to itself

    static constexpr auto fields =
        std::tuple{field("elements", &UIElementListing::elements), field("count", &UIElementListing::count),
                   field("complete", &UIElementListing::isComplete)};
    bool operator==(UIElementListing const&) const = default;
};
static_assert(listsEveryField<UIElementListing>);

}
