#include "GalleryTest.h"

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
    return eventually([&] { return desktop->log().find(line + "\n") != std::string::npos; });
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

}
