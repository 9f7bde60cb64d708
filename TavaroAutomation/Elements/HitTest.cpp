#include <TavaroAutomation/Elements/Private/HitTest.h>

#include <TavaroAutomation/Elements/Private/ElementTitle.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>
#include <vector>

namespace tavaro::atspi {

namespace {

constexpr int mostLevels = 80;

/// One question after the other, each of which depends on the answer to the one before.
class HitTest {
public:
    HitTest(AccessibilityBus& bus, Deadline deadline, std::stop_token stop)
        : bus_(bus)
        , deadline_(deadline)
        , stop_(std::move(stop)) {}

    /// Some programs answer with the innermost widget, some with the next one inwards.
    std::optional<Address> innermost(Address const& root, Place const& place) {
        std::optional<Address> result;
        std::vector<Address> seen{root};
        while (seen.size() < mostLevels) {
            auto const found = answer<Address>([&](auto then) { bus_.atPoint(seen.back(), place, then); });
            if (!found || std::ranges::find(seen, *found) != seen.end()) break;
            seen.push_back(*found);
            result = found;
        }
        return result;
    }

    /// The widget itself, then what is around it, outermost last.
    std::vector<Address> around(Address const& widget, Address const& root) {
        std::vector<Address> result{widget};
        while (result.back() != root && result.size() < mostLevels) {
            auto const parent = answer<Address>([&](auto then) { bus_.parent(result.back(), then); });
            if (!parent || parent->isNull()) break;
            result.push_back(*parent);
        }
        return result;
    }

    /// Of the outermost that has one: a dialog says more than its button.
    std::string titleOf(std::vector<Address> const& widgets, Toolkit toolkit) {
        for (std::size_t i = widgets.size(); i-- > 0;) {
            auto const name = answer<std::string>([&](auto then) { bus_.name(widgets[i], then); });
            if (auto title = readableTitle(name.value_or(""), toolkit); !title.empty()) return title;
        }
        return {};
    }

    bool hasLabel(std::vector<Address> const& widgets) {
        return std::ranges::any_of(widgets, [this](Address const& widget) {
            return answer<Role>([&](auto then) { bus_.role(widget, then); }) == Role::label;
        });
    }

    /// How far above the rest of a page something of these is drawn by habit: a menu above a list, that above text.
    int height(std::vector<Address> const& widgets) {
        int highest = 0;
        for (auto const& widget : widgets) {
            switch (answer<Role>([&](auto then) { bus_.role(widget, then); }).value_or(Role::panel)) {
            case Role::dialog:
            case Role::menu:
            case Role::popupMenu: return 2;
            case Role::listBox: highest = 1; break;
            default: break;
            }
        }
        return highest;
    }

    bool isLate() const { return isLate_; }

private:
    template<class T, class Ask> std::optional<T> answer(Ask ask) {
        std::optional<T> result;
        if (isLate_) return result;
        ask([&](std::optional<T> const& said) { result = said; });
        isLate_ = bus_.run(deadline_, stop_) != AccessibilityBus::Outcome::allAnswered;
        return result;
    }

    AccessibilityBus& bus_;
    Deadline const deadline_;
    std::stop_token const stop_;
    bool isLate_ = false;
};

}

namespace {

/// Without what is around both.
void leaveWhatDiffers(std::vector<Address>& one, std::vector<Address>& other) {
    while (!one.empty() && !other.empty() && one.back() == other.back()) {
        one.pop_back();
        other.pop_back();
    }
}

struct View {
    std::optional<Cover> cover;
    bool isLate = false; // the program did not say
};

View viewNow(AccessibilityBus& bus, PlacedElement const& element, UIPoint const& point, Deadline deadline,
             std::stop_token const& stop) {
    auto const& habits = habitsOf(element.toolkit);
    // What is in a popup is over everything, and in a window of its own, about which the root knows nothing.
    if (!habits.pointSeesWhatCovers || element.isInPopup) return {};
    HitTest test(bus, deadline, stop);
    auto placement = element.placement;
    if (habits.hasPagesInPixels) placement.scale = 1;
    auto const place = placement.inProgram(point);
    auto const hit = test.innermost(
        element.root, {static_cast<int>(std::lround(place.x)), static_cast<int>(std::lround(place.y)), habits.origin});
    if (!hit || *hit == element.address) return {.isLate = test.isLate()};
    auto over = test.around(*hit, element.root);
    auto wanted = test.around(element.address, element.root);
    bool const isAround = std::ranges::find(wanted, *hit) != wanted.end();
    bool const isInside = std::ranges::find(over, element.address) != over.end();
    if (isAround || isInside || test.isLate()) return {.isLate = test.isLate()};
    // Pages draw the label of a box over the box, and a click on it is one on the box.
    if (habits.showsPages && test.hasLabel(over)) return {};
    leaveWhatDiffers(over, wanted);
    // A menu may come before what it opens over.
    bool const isAbove = habits.pointGoesByOrder && test.height(wanted) > test.height(over);
    if (isAbove && !test.isLate()) return {};
    auto title = test.titleOf(over, element.toolkit);
    if (test.isLate()) return {.isLate = true};
    return {.cover = Cover{std::move(title)}};
}

}

std::optional<Cover> coverOf(AccessibilityBus& bus, PlacedElement const& element, UIPoint const& point,
                             Deadline deadline, std::stop_token const& stop) {
    using Clock = std::chrono::steady_clock;
    constexpr auto looking = std::chrono::milliseconds(150), longest = std::chrono::milliseconds(2000);
    constexpr auto answering = std::chrono::milliseconds(40), pause = std::chrono::milliseconds(15);
    constexpr int enough = 8; // answers; on a busy machine they take longer
    auto view = viewNow(bus, element, point, deadline, stop);
    // What is over an element stays there.
    bool const mayBeOld = habitsOf(element.toolkit).answersFromOldPicture;
    auto const begin = Clock::now();
    auto const isSettled = [&](int answers) {
        auto const passed = Clock::now() - begin;
        return (passed >= looking && answers >= enough) || passed >= longest || stop.stop_requested();
    };
    for (int answers = 0; view.cover && mayBeOld && !isSettled(answers);) {
        std::this_thread::sleep_for(pause);
        auto now = viewNow(bus, element, point, Clock::now() + answering, stop);
        if (now.isLate) continue;
        ++answers;
        view = std::move(now);
    }
    return view.cover;
}

}
