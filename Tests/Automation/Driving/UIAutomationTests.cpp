#include "../GalleryTest.h"

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroAutomation/Errors/AutomationError.h>

#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <future>
#include <gmock/gmock.h>
#include <set>
#include <thread>
#include <xcb/xfixes.h>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

void letClicksThrough(x11::Connection& connection, xcb_window_t window) {
    auto const nothing = xcb_generate_id(connection.get());
    connection.ask<xcb_xfixes_query_version, xcb_xfixes_query_version_reply>(5U, 0U);
    xcb_xfixes_create_region(connection.get(), nothing, 0, nullptr);
    xcb_xfixes_set_window_shape_region(connection.get(), window, XCB_SHAPE_SK_INPUT, 0, 0, nothing);
    connection.synchronize();
}

/// As a window manager's button does.
void minimise(x11::Connection& connection, xcb_window_t window) {
    constexpr std::uint32_t iconic = 3;
    xcb_client_message_event_t const event{.response_type = XCB_CLIENT_MESSAGE,
                                           .format = 32,
                                           .sequence = 0,
                                           .window = window,
                                           .type = connection.atom("WM_CHANGE_STATE"),
                                           .data = {.data32 = {iconic, 0, 0, 0, 0}}};
    xcb_send_event(connection.get(), 0, connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<char const*>(&event));
    connection.synchronize();
}

}

class GTK3Gallery : public GalleryTest {
protected:
    void SetUp() override { open("gtk3"); }
};

TEST_F(GTK3Gallery, opensInFrontOnceByEachOfItsNames) {
    EXPECT_EQ(info.name, "Widget Gallery");
    EXPECT_EQ(info.bundleID, "gtk3");
    EXPECT_EQ(info.title, "Gallery of GTK 3");
    for (auto const* const name : {"gtk3", "gtk3.desktop", "gtk3.py", "WIDGET GALLERY"})
        EXPECT_EQ(automation->openApp(name), info) << name;
    EXPECT_EQ(desktop->log(), "ready\n") << "it was started once";
    EXPECT_THAT(sentenceOf([&] { automation->openApp("No such thing"); }),
                StartsWith("There is no application “No such"));
}

TEST_F(GTK3Gallery, saysWhatCanBeClickedAndWhere) {
    auto const all = elements();
    std::map<std::string, std::string> const roles{
        {"Save", "Button"},       {"File", "MenuItem"},      {"Bold", "CheckBox"},
        {"Right", "RadioButton"}, {"Name:", "TextField"},    {"Search notes", "TextField"},
        {"Row 1", "Row"},         {"Password", "TextField"}, {"Small", "PopUpButton"}};
    for (auto const& [title, role] : roles) {
        ASSERT_TRUE(all.contains(title)) << title;
        EXPECT_EQ(all.at(title).role, role) << title;
        EXPECT_TRUE(all.at(title).isVisible) << title;
        EXPECT_EQ(all.at(title).frame.intersection(info.frame), all.at(title).frame) << title;
    }
    EXPECT_FALSE(all.at("Disabled one").isEnabled);
    EXPECT_FALSE(all.at("Row 60").isVisible);
    EXPECT_FALSE(all.contains("Open…")) << "of a closed menu";
}

TEST_F(GalleryTest, whatIsInAContainerThatIsScrolledAwayIsToldApart) {
    open("gtk3", "1000");
    auto const all = automation->elements({.app = app, .query = "Button ", .limit = 2000});
    EXPECT_EQ(all.count, 1000U);
    EXPECT_TRUE(all.isComplete);
    EXPECT_TRUE(all.elements.front().isVisible);
    EXPECT_FALSE(all.elements.back().isVisible);
}

class Passwords : public GalleryTest, public testing::WithParamInterface<char const*> {};

TEST_P(Passwords, areNeverRead) {
    open(GetParam());
    auto const all = elements();
    ASSERT_TRUE(all.contains("Password"));
    EXPECT_EQ(all.at("Password").role, "TextField");
    for (auto const& [title, element] : all) EXPECT_THAT(title, Not(HasSubstr("hunter2")));
}

INSTANTIATE_TEST_SUITE_P(InEachToolkit, Passwords, testing::Values("gtk3", "gtk4", "qt5"));

TEST_F(GTK3Gallery, aLimitIsNotSilentAndLeavesOutWhatIsOutOfViewFirst) {
    auto const rows = automation->elements({.app = app, .query = "Row ", .limit = 1000});
    EXPECT_EQ(rows.count, 60U);
    EXPECT_EQ(rows.elements.size(), 60U);
    auto const some = automation->elements({.app = app, .query = "Row ", .limit = 3});
    EXPECT_EQ(some.count, 60U);
    ASSERT_EQ(some.elements.size(), 3U);
    for (auto const& row : some.elements) EXPECT_TRUE(row.isVisible) << row.title;
}

TEST_F(GTK3Gallery, isClickedByTitleAndByIdAndByPoint) {
    auto const all = elements();
    clickTitle("save");
    EXPECT_TRUE(logsSoon("clicked Save"));
    click({.app = app, .element = all.at("Save As…").id});
    EXPECT_TRUE(logsSoon("clicked Save As…"));
    click({.point = all.at("Café").frame.center()});
    EXPECT_TRUE(logsSoon("clicked Café"));
    clickTitle("Bold");
    EXPECT_TRUE(logsSoon("bold True"));
    clickTitle("Row 3", "Row");
    EXPECT_TRUE(logsSoon("row 3"));
    clickTitle("Name");
    automation->keys({.text = "Zoë", .hold = 0});
    EXPECT_TRUE(logsSoon("typed Zoë"));
}

TEST_F(GTK3Gallery, aMenuItemTwoLevelsDeepIsChosenAndAnOpenMenuIsClosedFirst) {
    clickTitle("File");
    ASSERT_TRUE(elements().contains("Open…"));
    clickTitle("Export");
    clickTitle("As Picture");
    EXPECT_TRUE(logsSoon("chosen As _Picture"));
    clickTitle("File");
    clickTitle("Edit");
    clickTitle("Undo");
    EXPECT_TRUE(logsSoon("chosen Undo"));
    clickTitle("File");
    clickTitle("Save", "Button");
    EXPECT_TRUE(logsSoon("clicked Save")) << "with a menu open";
}

TEST_F(GTK3Gallery, toCloseAMenuNoMoreIsPressedThanTheMenuTakes) {
    clickTitle("Toast");
    clickTitle("File");
    clickTitle("Export");
    ASSERT_TRUE(elements().contains("As Picture"));
    clickTitle("Save", "Button");
    EXPECT_TRUE(logsSoon("clicked Save"));
    EXPECT_THAT(desktop->log(), Not(HasSubstr("key Escape"))) << "the toast is a popup that stays";
}

TEST_F(GTK3Gallery, whileAnotherProgramHoldsThePointerNothingIsClicked) {
    TestClient client(desktop->display());
    auto& connection = client.connection();
    auto const grab = connection.ask<xcb_grab_pointer, xcb_grab_pointer_reply>(
        std::uint8_t{0}, connection.root(), std::uint16_t{0}, std::uint8_t{XCB_GRAB_MODE_ASYNC},
        std::uint8_t{XCB_GRAB_MODE_ASYNC}, xcb_window_t{XCB_NONE}, xcb_cursor_t{XCB_NONE},
        xcb_timestamp_t{XCB_CURRENT_TIME});
    ASSERT_EQ(grab->status, XCB_GRAB_STATUS_SUCCESS);
    EXPECT_EQ(sentenceOf([&] { clickTitle("Café"); }),
              "“Café” cannot be clicked while a menu or another program holds the pointer: close that, then click.");
    xcb_ungrab_pointer(connection.get(), XCB_CURRENT_TIME);
    connection.synchronize();
    clickTitle("Café");
    EXPECT_TRUE(logsSoon("clicked Café"));
}

TEST_F(GTK3Gallery, anIconIsClickedOnceItIsAWindowAgain) {
    x11::Connection connection(desktop->display());
    for (int round = 0; round < 4; ++round) {
        minimise(connection, x11::activeWindow(connection));
        EXPECT_EQ(sentenceOf([&] { clickTitle("Café"); }), "done") << round;
    }
}

TEST_F(GTK3Gallery, aDialogAnswersAndHidesWhatIsBehindIt) {
    clickTitle("Ask");
    ASSERT_TRUE(eventually([&] { return elements().contains("Do it"); }));
    EXPECT_EQ(sentenceOf([&] { clickTitle("Save"); }), "“Save” is behind the dialog “Question”: answer that first.");
    clickTitle("Do it");
    EXPECT_TRUE(logsSoon("answered 1"));
}

TEST_F(GTK3Gallery, severalClicksSelectAndTheRightButtonOpensAMenu) {
    expectWordAndLineSelected("Story");
    expectContextMenu("Café", "chosen Inspect");
}

TEST_F(GTK3Gallery, aDialogThatComesWhileThePointerIsOnItsWayIsNotClickedThrough) {
    clickTitle("Ask later");
    EXPECT_EQ(sentenceOf([&] { automation->click({.target = {.app = app, .title = "Café"}, .glide = 2, .hold = 0}); }),
              "“Café” is behind the dialog “Question”: answer that first.");
    EXPECT_THAT(desktop->log(), Not(HasSubstr("clicked Café")));
}

TEST_F(GTK3Gallery, whatIsOffTheDisplayIsClickedOnceItsWindowIsMoved) {
    TestClient client(desktop->display());
    auto const id = x11::activeWindow(client.connection());
    struct Case {
        PixelRect frame;
        std::string title;
    };
    for (auto const& each : {Case{{-400, 100, 700, 480}, "Save"}, Case{{300, 770, 700, 480}, "Café"}}) {
        client.move(id, each.frame);
        ASSERT_TRUE(eventually([&] { return !elements().at(each.title).isVisible; })) << each.title;
        clickTitle(each.title);
        EXPECT_TRUE(logsSoon("clicked " + each.title));
    }
    EXPECT_THAT(sentenceOf([&] { clickTitle("Row 60"); }), HasSubstr("out of view"));
}

TEST_F(GTK3Gallery, aListOpensAndGivesItsEntries) {
    clickTitle("Small");
    clickTitle("Large");
    EXPECT_TRUE(logsSoon("size Large"));
}

TEST_F(GTK3Gallery, whatIsScrolledAwayIsScrolledTo) {
    EXPECT_THAT(sentenceOf([&] { clickTitle("Row 60"); }), HasSubstr("out of view"));
    constexpr double far = 5000, quick = 0.05;
    auto const report =
        automation->scroll({.target = {.app = app, .title = "Row 60"}, .down = far, .glide = quick, .hold = quick});
    EXPECT_TRUE(report.isAtEnd);
    clickTitle("Row 60");
    EXPECT_TRUE(logsSoon("row 60"));
    EXPECT_FALSE(elements().at("Row 1").isVisible);
}

TEST_F(GTK3Gallery, whatCannotBeClickedIsASentence) {
    EXPECT_EQ(sentenceOf([&] { clickTitle("Disabled one"); }), "“Disabled one” is disabled right now.");
    auto const missing = sentenceOf([&] { clickTitle("Sav it"); });
    EXPECT_THAT(missing, StartsWith("Nothing titled “Sav it” is in Widget Gallery. Titles there include "));
    EXPECT_THAT(missing, HasSubstr("“Save”"));
    EXPECT_THAT(missing, EndsWith("Custom-drawn areas aren't listed: use ui_screenshot and click by x and y."));
    EXPECT_THAT(sentenceOf([&] { click({.app = app, .element = "e12345"}); }),
                EndsWith(" any more — the window changed. Call ui_elements again."));
}

TEST_F(GTK3Gallery, aClickGoesToNoOtherWindowThanItsElements) {
    TestClient client(desktop->display());
    auto const overlay = client.makeWindow({.frame = {0, 0, 4000, 4000}, .isPopup = true});
    EXPECT_EQ(sentenceOf([&] { clickTitle("Save"); }), "“Save” is covered by another window.");
    letClicksThrough(client.connection(), overlay);
    clickTitle("Save");
    EXPECT_TRUE(logsSoon("clicked Save"));
    client.destroy(overlay);

    auto const minimised = std::async(std::launch::async, [&] {
        std::this_thread::sleep_for(200ms);
        minimise(client.connection(), x11::activeWindow(client.connection()));
    });
    auto const outcome =
        sentenceOf([&] { automation->click({.target = {.app = app, .title = "Café"}, .glide = 0.8, .hold = 0}); });
    EXPECT_TRUE(outcome == "“Café” is not there any more: its window was moved, minimised or closed." ||
                (outcome == "done" && logsSoon("clicked Café")))
        << outcome;
}

TEST_F(GTK3Gallery, whatChangesWhileThePointerIsOnItsWayIsFollowedOrASentence) {
    auto const clickSlowly = [this] {
        automation->click({.target = {.app = app, .title = "Save", .role = "Button"}, .glide = 0.8, .hold = 0.05});
    };
    clickTitle("Move later");
    clickSlowly();
    EXPECT_TRUE(logsSoon("clicked Save"));
    clickTitle("Rename later");
    EXPECT_THAT(sentenceOf(clickSlowly), StartsWith("“Save” is gone")) << "though “Save As…” contains it";
    clickTitle("Quit later");
    auto const lateClick = [this] {
        automation->click({.target = {.app = app, .title = "Café"}, .glide = 0.8, .hold = 0.05});
    };
    EXPECT_EQ(sentenceOf(lateClick), "Widget Gallery shows no window. Open it with ui_open_app.");
    EXPECT_THAT(desktop->log(), Not(HasSubstr("clicked Save As…")));
}

TEST_F(GTK3Gallery, aProgramThatHangsCostsTwoSecondsAndThenSaysSo) {
    clickTitle("Freeze");
    ASSERT_TRUE(logsSoon("frozen"));
    auto const start = std::chrono::steady_clock::now();
    EXPECT_FALSE(automation->elements({.app = app}).isComplete);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    auto const click = std::chrono::steady_clock::now();
    EXPECT_EQ(sentenceOf([&] { clickTitle("Save"); }), "Widget Gallery does not answer.");
    EXPECT_LT(std::chrono::steady_clock::now() - click, 3s);
}

TEST_F(GTK3Gallery, anApplicationThatIsClosedHasNoWindow) {
    clickTitle("Save");
    ASSERT_TRUE(logsSoon("clicked Save"));
    auto const isClosed = [&] {
        return sentenceOf([&] { automation->elements({.app = app}); }) ==
               "Widget Gallery shows no window. Open it with ui_open_app.";
    };
    automation->keys({.keys = {"alt+f4"}, .hold = 0});
    EXPECT_TRUE(eventually(isClosed));
    EXPECT_EQ(automation->openApp(app).title, "Gallery of GTK 3");
}

TEST_F(GTK3Gallery, aProgramThatTellsNothingOfItsWidgetsIsASentenceAndWorkedByPoints) {
    TestClient client(desktop->display());
    auto const window =
        client.makeWindow({.frame = {20, 30, 200, 100}, .windowClass = "Plain", .title = "Just pixels"});
    std::uint32_t const presses = XCB_EVENT_MASK_BUTTON_PRESS;
    xcb_change_window_attributes(client.connection().get(), window, XCB_CW_EVENT_MASK, &presses);
    client.connection().synchronize();
    EXPECT_TRUE(eventually([&] {
        return sentenceOf([&] { automation->elements({.app = "plain"}); }) ==
               "plain tells nothing of what is in its windows. Use ui_screenshot and click by x and y.";
    }));
    EXPECT_THAT(sentenceOf([&] { click({.app = "plain", .title = "Go"}); }),
                StartsWith("Nothing titled “Go” is in plain. plain tells nothing of what is in its windows."));
    auto const picture = automation->screenshot({.app = "plain"});
    EXPECT_THAT(picture.caption, HasSubstr("Just pixels"));
    UIPoint const point{picture.frame.x + 60, picture.frame.y + 70};
    click({.point = point});
    x11::Event press;
    ASSERT_TRUE(eventually([&] {
        press = client.connection().poll();
        return press && (press->response_type & 0x7f) == XCB_BUTTON_PRESS;
    }));
    auto const& at = reinterpret_cast<xcb_button_press_event_t const&>(*press);
    EXPECT_EQ((UIPoint{static_cast<double>(at.root_x), static_cast<double>(at.root_y)}), point);
}

/// A container with 2,500 lines, of which a dozen show.
class LongGallery : public GalleryTest {
protected:
    /// The numbers of the lines that show, without a hole.
    std::set<int> lines() {
        auto const listing = automation->elements({.app = app, .query = "Line ", .limit = 1000});
        EXPECT_TRUE(listing.isComplete);
        std::set<int> numbers;
        double top = 1e6, bottom = 0;
        for (auto const& line : listing.elements) {
            if (!line.isVisible) continue;
            top = std::min(top, line.frame.y);
            bottom = std::max(bottom, line.frame.y + line.frame.height);
            numbers.insert(std::stoi(line.title.substr(std::string("Line ").size())));
        }
        EXPECT_GE(bottom - top, 200);
        if (!numbers.empty()) {
            EXPECT_EQ(static_cast<int>(numbers.size()), *numbers.rbegin() - *numbers.begin() + 1);
        }
        return numbers;
    }

    void scroll(double down) {
        auto const inside = fmt::format("Line {}", *lines().rbegin() - 2);
        automation->scroll({.target = {.app = app, .title = inside}, .down = down, .glide = 0.05, .hold = 0.2});
    }
    /// The keys go to the container once one of its lines has them.
    void goToTheEnd() {
        clickTitle(fmt::format("Line {}", *lines().begin() + 2));
        automation->keys({.keys = {"end"}, .hold = 0});
        UIRect before;
        ASSERT_TRUE(eventually([&] { // some toolkits glide there
            auto const last = automation->elements({.app = app, .query = "Line 2500"}).elements;
            if (last.empty() || !last.front().isVisible) return false;
            return std::exchange(before, last.front().frame) == last.front().frame;
        }));
    }

    void expectLinesToBeFoundWhereverTheyAreScrolled(std::function<void()> const& goFar) {
        auto const first = lines();
        ASSERT_TRUE(first.contains(1));
        for (auto const& go : {std::function<void()>([&] { scroll(437); }), goFar}) {
            go();
            auto const later = lines();
            EXPECT_FALSE(later.contains(1));
            EXPECT_LE(first.size(), later.size() + 3);
        }
    }
};

TEST_F(LongGallery, ofATableOfGTK3HasAllLinesThatShowAndTheHeading) {
    open("gtk3", "2500 table");
    EXPECT_TRUE(elements().at("Heading").isVisible);
    expectLinesToBeFoundWhereverTheyAreScrolled([this] { goToTheEnd(); });
    EXPECT_TRUE(elements().at("Heading").isVisible);
}

TEST_F(LongGallery, ofAColumnOfGTK3HasAllLinesThatShow) {
    open("gtk3", "2500 column");
    expectLinesToBeFoundWhereverTheyAreScrolled([this] { scroll(20'000); });
}

TEST_F(LongGallery, ofAColumnOfGTK4HasAllLinesThatShow) {
    open("gtk4", "2500 column");
    expectLinesToBeFoundWhereverTheyAreScrolled([this] { goToTheEnd(); });
    auto const title = fmt::format("Line {}", *lines().begin() + 2);
    clickTitle(title);
    EXPECT_TRUE(logsSoon("clicked " + title));
}

/// Whose toolkit knows places within its windows only.
class GTK4Gallery : public GalleryTest {
protected:
    void SetUp() override { open("gtk4"); }
};

TEST_F(GTK4Gallery, isClickedByTitleThroughItsMenuToo) {
    clickTitle("Save");
    EXPECT_TRUE(logsSoon("clicked Save"));
    clickTitle("Inform");
    EXPECT_TRUE(logsSoon("clicked _Inform"));
    clickTitle("Options");
    clickTitle("About");
    EXPECT_TRUE(logsSoon("chosen about"));
    clickTitle("Bold");
    EXPECT_TRUE(logsSoon("bold True"));
    clickTitle("Row 2");
    EXPECT_TRUE(logsSoon("row 2"));
    EXPECT_EQ(sentenceOf([&] { clickTitle("Disabled one"); }), "“Disabled one” is disabled right now.");
}

TEST_F(GTK4Gallery, isTypedIntoAndScrolled) {
    clickTitle("Search notes");
    automation->keys({.text = "hello", .hold = 0});
    EXPECT_TRUE(logsSoon("typed hello"));
    constexpr double far = 5000, quick = 0.05;
    automation->scroll({.target = {.app = app, .title = "Row 60"}, .down = far, .glide = quick, .hold = quick});
    clickTitle("Row 60");
    EXPECT_TRUE(logsSoon("row 60"));
}

TEST_F(GTK4Gallery, whatAnotherWidgetCoversIsNotClickedThroughIt) {
    clickTitle("Notice");
    EXPECT_TRUE(eventually([&] {
        return sentenceOf([&] { clickTitle("Save"); }) == "“Save” is covered by “Please wait”: close that, then click.";
    }));
    clickTitle("Inform");
    EXPECT_TRUE(logsSoon("clicked _Inform")) << "beside it";
    EXPECT_THAT(desktop->log(), Not(HasSubstr("clicked Save")));
}

/// Whose toolkit takes what is scrolled away and closed for showing.
class Qt5Gallery : public GalleryTest {
protected:
    void SetUp() override { open("qt5"); }
};

TEST_F(Qt5Gallery, saysOnlyWhatShows) {
    auto const all = elements();
    EXPECT_EQ(all.at("Row 1").role, "Row");
    EXPECT_EQ(all.at("First").role, "Tab");
    EXPECT_FALSE(all.at("Disabled one").isEnabled);
    EXPECT_FALSE(all.at("Row 60").isVisible);
    for (auto const* const title : {"On the second", "Medium", "Open..."}) EXPECT_FALSE(all.contains(title)) << title;
    for (auto const& [title, element] : all)
        EXPECT_TRUE(!element.isVisible || !element.frame.intersection(info.frame).isEmpty()) << title;
}

TEST_F(Qt5Gallery, isClickedByTitleInMenusListsAndTabsToo) {
    clickTitle("Save");
    EXPECT_TRUE(logsSoon("clicked Save"));
    clickTitle("File");
    clickTitle("Export");
    clickTitle("As Picture");
    EXPECT_TRUE(logsSoon("chosen Picture"));
    clickTitle("Small");
    clickTitle("Large");
    EXPECT_TRUE(logsSoon("size Large"));
    clickTitle("Second");
    clickTitle("On the second");
    EXPECT_TRUE(logsSoon("clicked On the second"));
    clickTitle("Row 3");
    EXPECT_TRUE(logsSoon("row Row 3"));
    automation->scroll({.target = {.app = app, .title = "Row 60"}, .down = 5000, .glide = 0.05, .hold = 0.05});
    clickTitle("Row 60");
    EXPECT_TRUE(logsSoon("row Row 60"));
    clickTitle("Search notes");
    automation->keys({.text = "hello", .hold = 0});
    EXPECT_TRUE(logsSoon("typed hello"));
}

TEST_F(Qt5Gallery, severalClicksSelectAndTheRightButtonOpensAMenu) {
    expectWordAndLineSelected("Story");
    automation->click(
        {.target = {.app = app, .title = "Save As"}, .button = UIMouseButton::right, .glide = 0.05, .hold = 0.2});
    // Qt tells of no menu that belongs to no other, so it is worked by keys or points.
    automation->keys({.keys = {"down", "return"}, .hold = 0});
    EXPECT_TRUE(logsSoon("chosen Inspect"));
}

}
