#include "GalleryTest.h"

#include <algorithm>
#include <array>

namespace tavaro {

void GalleryTest::open(std::string const& gallery, std::string const& arguments) {
    if (auto const missing = TestDesktop::missing(); !missing.empty()) GTEST_SKIP() << missing << " is not installed";
    if (!TestDesktop::canRun(gallery)) GTEST_SKIP() << "Python has no " << gallery;
    desktop.emplace();
    desktop->install(app, gallery, arguments);
    automation.emplace(desktop->display());
    info = automation->openApp(app);
}

bool GalleryTest::logsSoon(std::string const& line) const {
    return eventually([&] { return hasLogged(line); });
}

bool GalleryTest::hasLogged(std::string const& line) const {
    return desktop->log().find(line + "\n") != std::string::npos;
}

std::map<std::string, UIElement> GalleryTest::elements() {
    std::map<std::string, UIElement> result;
    for (auto const& element : automation->elements({.app = app, .limit = 1000}).elements)
        result.emplace(element.title, element);
    return result;
}

UIActionReport GalleryTest::click(UITarget const& target) {
    constexpr double quick = 0.05;
    return automation->click({.target = target, .glide = quick, .hold = quick});
}

UIActionReport GalleryTest::clickTitle(std::string const& title, std::string const& role) {
    return click({.app = app, .title = title, .role = role});
}

void GalleryTest::expectWordAndLineSelected(std::string const& text) {
    constexpr double apart = 0.6; // seconds, or the clicks that follow count on
    automation->click({.target = {.app = app, .title = text}, .count = 2, .glide = 0.05, .hold = apart});
    auto const isSelected = [&](std::string const& word) { return hasLogged("selected " + word); };
    EXPECT_TRUE(eventually([&] {
        return std::ranges::any_of(std::array{"alpha", "beta", "gamma", "delta"}, isSelected);
    })) << desktop->log();
    automation->click({.target = {.app = app, .title = text}, .count = 3, .glide = 0.05, .hold = 0});
    std::string line = "alpha beta gamma delta";
    for (int i = 1; i < 6; ++i) line += " alpha beta gamma delta";
    EXPECT_TRUE(logsSoon("selected " + line)) << desktop->log();
}

void GalleryTest::expectContextMenu(std::string const& title, std::string const& line) {
    automation->click(
        {.target = {.app = app, .title = title}, .button = UIMouseButton::right, .glide = 0.05, .hold = 0.05});
    clickTitle("Inspect");
    EXPECT_TRUE(logsSoon(line));
}

}
