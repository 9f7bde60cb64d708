#include <TavaroAutomation/Elements/Private/HitTest.h>

#include "FakeProgram.h"

#include <gtest/gtest.h>

namespace tavaro::atspi {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int frame = 1, content = 2, save = 3, text = 4, dialog = 5, close = 6, label = 7, drawn = 8;

FakeWidget widget(Role role, std::string name, Extents const& extents, std::vector<int> children = {}) {
    return {.role = role, .name = std::move(name), .extents = extents, .children = std::move(children)};
}

/// A button with a text in it, the right half of it under a dialog, and a box under its label.
std::deque<FakeWidget> window() {
    return {widget(Role::application, "app", {}, {frame}),
            widget(Role::frame, "Window", {0, 0, 400, 300}, {content, dialog}),
            widget(Role::panel, "", {0, 0, 400, 300}, {save, label}),
            widget(Role::pushButton, "Save", {10, 10, 100, 20}, {text}),
            widget(Role::staticText, "Save", {20, 10, 20, 20}),
            widget(Role::dialog, "Cookies", {60, 0, 300, 40}, {close}),
            widget(Role::pushButton, "Accept", {80, 5, 50, 30}),
            widget(Role::label, "", {10, 100, 100, 20}, {drawn}),
            widget(Role::panel, "", {10, 100, 20, 20})};
}

class HitTestTest : public testing::Test {
protected:
    void SetUp() override {
        if (testBus.address().empty()) GTEST_SKIP() << "dbus-daemon is not installed";
        bus.emplace(AccessibilityBus::KnownAddress{testBus.address()});
    }

    static PlacedElement element(FakeProgram const& program, int place, Toolkit toolkit) {
        return {.address = program.widget(place),
                .root = program.widget(frame),
                .toolkit = toolkit,
                .placement = {.scale = 2, .dx = 1000, .dy = 500}};
    }
    /// At a point of the program, which is a pixel in Chromium at any scale: what covers it, "nothing", or "something".
    std::string cover(PlacedElement const& element, double x, double y, std::chrono::milliseconds longest = 10s) {
        double const scale = element.toolkit == Toolkit::chromium ? 1 : 2;
        auto const cover = coverOf(*bus, element, {x * scale + 1000, y * scale + 500}, Clock::now() + longest, {});
        if (!cover) return "nothing";
        return cover->title.empty() ? "something" : cover->title;
    }

    TestBus testBus;
    std::optional<AccessibilityBus> bus;
};

}

TEST_F(HitTestTest, whatLiesOverAnElementCoversItButNotItsPartsOrWhatHoldsIt) {
    for (auto const& [name, toolkit] : {std::pair{"GTK", Toolkit::gtk4}, {"Chromium", Toolkit::chromium}}) {
        FakeProgram const program(testBus, name, window());
        auto const button = element(program, save, toolkit);
        EXPECT_EQ(cover(button, 15, 15), "nothing") << name << ": itself";
        EXPECT_EQ(cover(button, 30, 15), "nothing") << name << ": its text";
        EXPECT_EQ(cover(button, 70, 2), "Cookies") << name;
        EXPECT_EQ(cover(button, 90, 15), "Cookies") << name << ": a button of the dialog";
        EXPECT_EQ(cover(button, 200, 200), "nothing") << name << ": the page, which holds it";
        EXPECT_EQ(cover(button, 500, 500), "nothing") << name << ": the program knows of nothing there";
        EXPECT_EQ(cover(element(program, text, toolkit), 15, 15), "nothing") << name << ": the button around it";
    }
}

TEST_F(HitTestTest, onAPageALabelDoesNotCoverItsBox) {
    FakeProgram const page(testBus, "Chromium", window());
    EXPECT_EQ(cover(element(page, save, Toolkit::chromium), 15, 110), "nothing");
    FakeProgram const window4(testBus, "GTK", window());
    EXPECT_EQ(cover(element(window4, save, Toolkit::gtk4), 15, 110), "something");
}

TEST_F(HitTestTest, whatChromiumSaysBeforeItLookedIsAskedAgain) {
    auto widgets = window();
    widgets[0].guesses = 6;
    widgets[dialog].role = Role::panel;
    FakeProgram const program(testBus, "Chromium", widgets);
    EXPECT_EQ(cover(element(program, close, Toolkit::chromium), 90, 15), "nothing");
    EXPECT_EQ(cover(element(program, save, Toolkit::chromium), 90, 15), "Cookies") << "it stays there";
}

TEST_F(HitTestTest, aMenuOfAPageOpensOverWhatComesAfterIt) {
    constexpr int page = 2, menu = 3, item = 4, list = 5, row = 6;
    std::deque<FakeWidget> widgets{widget(Role::application, "app", {}, {frame}),
                                   widget(Role::frame, "Window", {0, 0, 400, 300}, {page}),
                                   widget(Role::documentWeb, "Page", {0, 0, 400, 300}, {menu, list}),
                                   widget(Role::menu, "", {0, 100, 80, 40}, {item}),
                                   widget(Role::menuItem, "Export", {0, 100, 80, 20}),
                                   widget(Role::listBox, "Choices", {0, 90, 400, 100}, {row}),
                                   widget(Role::listItem, "Choice 1", {0, 100, 400, 20})};
    FakeProgram const program(testBus, "Chromium", widgets);
    EXPECT_EQ(cover(element(program, item, Toolkit::chromium), 40, 110), "nothing");
    widgets[list].role = Role::dialog;
    FakeProgram const other(testBus, "Chromium", widgets);
    EXPECT_EQ(cover(element(other, item, Toolkit::chromium), 40, 110), "Choices") << "a dialog is over a menu";
    widgets[menu].role = Role::panel;
    FakeProgram const plain(testBus, "Chromium", widgets);
    EXPECT_EQ(cover(element(plain, item, Toolkit::chromium), 40, 110), "Choices");
}

TEST_F(HitTestTest, aToolkitThatDoesNotKnowWhatIsOnTopIsNotAsked) {
    FakeProgram const program(testBus, "gtk", window());
    EXPECT_EQ(cover(element(program, save, Toolkit::gtk3), 90, 15), "nothing");
    EXPECT_EQ(program.asked(frame, "GetAccessibleAtPoint"), 0);
}

TEST_F(HitTestTest, aProgramThatDoesNotAnswerDelaysAClickNoLongerThanItIsGiven) {
    auto widgets = window();
    widgets[dialog].isSilent = true;
    FakeProgram const program(testBus, "Chromium", widgets);
    auto const start = Clock::now();
    EXPECT_EQ(cover(element(program, save, Toolkit::chromium), 90, 15, 200ms), "nothing");
    EXPECT_LT(Clock::now() - start, 5s) << "the bus itself waits for 25";
}

}
