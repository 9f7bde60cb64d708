#include "ElementsBench.h"

#include "../../Tests/Automation/TestDesktop.h"

#include <TavaroAutomation/Driving/UIAutomation.h>
#include <TavaroAutomation/Elements/Private/AccessibilityBus.h>
#include <TavaroAutomation/Errors/AutomationError.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace tavaro {

namespace {

using Clock = std::chrono::steady_clock;

double milliseconds(std::function<void()> const& work) {
    auto const start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::function<void()> const& work) {
    constexpr int rounds = 9;
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) times.push_back(milliseconds(work));
    std::ranges::sort(times);
    return times[rounds / 2];
}

void print(std::string const& name, double value, char const* unit) {
    std::printf("automation.%s %.4g %s\n", name.c_str(), value, unit);
}

/// What it takes to ask the program that started last as many things as that, with nothing made of the answers.
double questions(std::string const& display, std::size_t count) {
    atspi::AccessibilityBus bus(display);
    auto const answered = [&] { bus.run(Clock::now() + std::chrono::seconds(20)); };
    std::vector<atspi::Address> programs;
    bus.programs([&](auto const& all) { programs = all.value_or(std::vector<atspi::Address>{}); });
    answered();
    return median([&] {
        for (std::size_t i = 0; i < count; ++i) bus.role(programs.back(), [](auto) {});
        answered();
    });
}

void benchClicks(UIAutomation& automation, std::string const& gallery) {
    auto const click = [&](UITarget const& target) { automation.click({.target = target, .glide = 0, .hold = 0}); };
    auto const place = automation.elements({.app = gallery, .query = "Save"}).elements.at(0).frame.center();
    double const byPoint = median([&] { click({.point = place}); });
    double const byTitle = median([&] { click({.app = gallery, .title = "Save"}); });
    print("click_by_title." + gallery, byTitle - byPoint, "ms");
}

/// A program with that many buttons, most of them scrolled away, and how long it takes to list them.
void benchListing(std::string const& gallery, int buttons) {
    auto const name = "elements." + gallery + "." + std::to_string(buttons);
    TestDesktop const desktop;
    desktop.install(gallery, gallery, std::to_string(buttons));
    UIAutomation automation(desktop.display());
    automation.openApp(gallery);
    UIElementListing listing;
    constexpr std::size_t all = 100'000;
    double const time = median([&] { listing = automation.elements({.app = gallery, .limit = all}); });
    print(name, time, "ms");
    print(name + ".listed", static_cast<double>(listing.elements.size()),
          listing.isComplete ? "elements" : "elements, cut short");
    print(name + ".to_bare_questions", time / questions(desktop.display(), listing.elements.size()), "ratio");
    if (buttons == 0) benchClicks(automation, gallery);
}

}

void benchElements() {
    if (!TestDesktop::missing().empty())
        return (void)std::printf("# %s is not installed\n", TestDesktop::missing().c_str());
    for (auto const* const gallery : {"gtk3", "gtk4", "qt5"}) {
        if (!TestDesktop::canRun(gallery)) continue;
        for (int const buttons : {0, 1000, 10'000}) {
            try {
                benchListing(gallery, buttons);
            } catch (AutomationError const& error) {
                std::printf("# %s with %d buttons: %s\n", gallery, buttons, error.what());
            }
        }
    }
}

}
