#include "ElementsBench.h"

#include "../../Tests/Automation/TestDesktop.h"

#include <TavaroAutomation/Driving/UIAutomation.h>

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

/// A program with that many buttons, and how long it takes to list them.
void benchListing(std::string const& gallery, int buttons) {
    auto const name = "elements." + gallery + "." + std::to_string(buttons);
    if (!TestDesktop::missing().empty() || !TestDesktop::canRun(gallery)) return print(name + ".skipped", 1, "");
    TestDesktop const desktop;
    desktop.install(gallery, gallery, std::to_string(buttons));
    UIAutomation automation(desktop.display());
    automation.openApp(gallery);
    UIElementListing listing;
    constexpr std::size_t all = 100'000;
    print(name, median([&] { listing = automation.elements({.app = gallery, .limit = all}); }), "ms");
    print(name + ".listed", static_cast<double>(listing.elements.size()),
          listing.isComplete ? "elements" : "elements, cut short");
    if (buttons == 0) {
        auto const click = [&](UITarget const& target) { automation.click({.target = target, .glide = 0, .hold = 0}); };
        auto const place = automation.elements({.app = gallery, .query = "Save"}).elements.at(0).frame.center();
        double const byPoint = median([&] { click({.point = place}); });
        double const byTitle = median([&] { click({.app = gallery, .title = "Save"}); });
        print("click_by_title." + gallery, byTitle - byPoint, "ms");
    }
}

}

void benchElements() {
    for (auto const* const gallery : {"gtk3", "gtk4"}) {
        for (int const buttons : {0, 1000, 10'000}) benchListing(gallery, buttons);
    }
}

}
