#include <TavaroAutomation/Elements/Private/PlacedElement.h>

#include <cmath>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <map>
#include <set>

namespace tavaro::atspi {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

States statesOf(std::initializer_list<State> states) {
    std::uint64_t bits = 0;
    for (auto const state : states) bits |= 1ULL << static_cast<unsigned>(state);
    return States(bits);
}

States const usual = statesOf({State::showing, State::visible, State::sensitive, State::focusable});

x11::OpenWindow window(std::string title, UIRect const& contents) {
    // As a window manager frames it: a title bar of 20 points, borders of 1.
    UIRect const frame{contents.x - 1, contents.y - 20, contents.width + 2, contents.height + 21};
    return {.window = 1, .pid = 5, .title = std::move(title), .contents = contents, .frame = frame};
}

x11::OpenWindow popup(UIRect const& contents) {
    return {.window = 2, .pid = 5, .contents = contents, .frame = contents, .isPopup = true};
}

/// A tree that reads like one.
struct TestTree {
    explicit TestTree(Toolkit toolkit) { tree.toolkit = toolkit; }

    int add(int parent, Role role, std::string name, Extents const& extents, States states = usual) {
        int const index = static_cast<int>(tree.nodes.size());
        tree.nodes.push_back({.address = {":1.1", fmt::format("/{}", index)},
                              .parent = parent,
                              .role = role,
                              .ownRole = role,
                              .states = states,
                              .extents = extents,
                              .name = std::move(name)});
        if (parent >= 0) tree.nodes[static_cast<std::size_t>(parent)].children.push_back(index);
        return index;
    }

    std::vector<UIElement> placed(std::vector<x11::OpenWindow> const& windows) const {
        std::vector<UIElement> result;
        for (auto const& each : placedElements(tree, windows, {0, 0, 4000, 3000})) result.push_back(each.element);
        return result;
    }
    std::vector<std::string> visible(std::vector<x11::OpenWindow> const& windows) const {
        std::vector<std::string> result;
        for (auto const& each : placed(windows)) {
            if (each.isVisible) result.push_back(each.title);
        }
        return result;
    }

    AccessibleTree tree;
};

}

TEST(PlacedElement, whereAToolkitKnowsItsPlaceItIsBelieved) {
    for (auto const& root : {Extents{100, 200, 400, 300}, Extents{99, 180, 402, 321}}) { // contents, or the whole frame
        TestTree tree(Toolkit::gtk3);
        auto const frame = tree.add(-1, Role::frame, "Main", root);
        tree.add(frame, Role::pushButton, "Save", {110, 210, 50, 20});
        auto const elements = tree.placed({window("Main", {100, 200, 400, 300})});
        ASSERT_EQ(elements.size(), 1u);
        EXPECT_EQ(elements[0].frame, (UIRect{110, 210, 50, 20}));
        EXPECT_EQ(elements[0].role, "Button");
        EXPECT_TRUE(elements[0].isEnabled && elements[0].isVisible);
    }
}

TEST(PlacedElement, atAScaleOfTwoEverythingIsTwiceAsFarAndAsLarge) {
    for (double const scale : {1.25, 1.5, 2.0, 3.0}) {
        TestTree tree(Toolkit::qt);
        auto const frame = tree.add(-1, Role::frame, "Main", {40, 80, 400, 300});
        tree.add(frame, Role::pushButton, "Save", {80, 120, 40, 20});
        auto const elements = tree.placed({window("Main", {40 * scale, 80 * scale, 400 * scale, 300 * scale})});
        ASSERT_EQ(elements.size(), 1u) << scale;
        EXPECT_EQ(elements[0].frame, (UIRect{80 * scale, 120 * scale, 40 * scale, 20 * scale})) << scale;
    }
}

TEST(PlacedElement, anyScaleIsKnownByTheShapeOfAWindow) {
    for (auto const toolkit : {Toolkit::qt, Toolkit::chromium, Toolkit::gecko}) {
        for (double const scale : {0.8, 1.1, 1.35, 1.4375, 2.25, 2.7}) {
            auto const said = [&](UIRect const& rect) {
                return Extents{static_cast<int>(rect.x / scale), static_cast<int>(rect.y / scale),
                               static_cast<int>(rect.width / scale), static_cast<int>(rect.height / scale)};
            };
            UIRect const main{861, 435, 677, 729}, list{900, 500, 200, 900};
            std::map<std::string, UIRect> const places{{"Save", {1050, 470, 290, 40}}, {"Open", {905, 1300, 190, 35}}};
            TestTree tree(toolkit);
            auto const frame = tree.add(-1, Role::frame, "Letter", said(main));
            tree.add(frame, Role::pushButton, "Save", said(places.at("Save")));
            auto const menu = tree.add(frame, Role::popupMenu, "", said(list));
            tree.add(menu, Role::menuItem, "Open", said(places.at("Open")));
            auto const placed = tree.placed({popup(list), window("Letter — Editor", main)});
            ASSERT_EQ(placed.size(), 2U) << scale;
            for (auto const& each : placed) {
                auto const at = each.frame.center(), expected = places.at(each.title).center();
                EXPECT_LT(std::hypot(at.x - expected.x, at.y - expected.y), 4) << each.title << scale;
                EXPECT_TRUE(each.isVisible) << each.title << scale;
            }
        }
    }
}

TEST(PlacedElement, whatIsOnAPageIsInPixelsThoughTheBrowserIsScaled) {
    TestTree tree(Toolkit::chromium);
    auto const frame = tree.add(-1, Role::frame, "Page", {10, 20, 640, 400});
    tree.add(frame, Role::pushButton, "Reload", {30, 40, 20, 20});
    auto const page = tree.add(frame, Role::documentWeb, "Page", {20, 140, 1280, 700});
    tree.add(page, Role::link, "More", {900, 600, 50, 20});
    std::map<std::string, UIRect> frames;
    for (auto const& each : tree.placed({window("Page", {20, 40, 1280, 800})})) frames[each.title] = each.frame;
    EXPECT_EQ(frames["Reload"], (UIRect{60, 80, 40, 40}));
    EXPECT_EQ(frames["More"], (UIRect{900, 600, 50, 20}));
}

TEST(PlacedElement, gtk4CountsFromInsideOfTheShadowAndInPopupsFromTheirCorner) {
    TestTree tree(Toolkit::gtk4);
    auto const frame = tree.add(-1, Role::frame, "Main", {0, 0, 400, 300});
    auto const button = tree.add(frame, Role::pushButton, "Options", {10, 10, 80, 30});
    auto const menu = tree.add(button, Role::menu, "", {-30, 40, 120, 90});
    tree.add(menu, Role::menuItem, "About", {-20, 50, 100, 20});
    std::map<std::string, UIRect> frames;
    for (auto const& each : tree.placed({popup({700, 500, 120, 90}), window("Main", {195, 95, 410, 310})}))
        frames[each.title] = each.frame;
    EXPECT_EQ(frames["Options"], (UIRect{210, 110, 80, 30}));
    EXPECT_EQ(frames["About"], (UIRect{710, 510, 100, 20}));
}

TEST(PlacedElement, whatIsCutOffOrInNoWindowIsNotVisible) {
    TestTree tree(Toolkit::qt);
    auto const frame = tree.add(-1, Role::frame, "Main", {100, 100, 400, 300});
    auto const list = tree.add(frame, Role::filler, "", {100, 150, 400, 100});
    tree.add(list, Role::listItem, "In", {100, 160, 400, 20});
    tree.add(list, Role::listItem, "Half", {100, 240, 400, 20});
    tree.add(list, Role::listItem, "Below", {100, 300, 400, 20});
    auto const line = tree.add(list, Role::filler, "", {100, 600, 400, 20});
    tree.add(line, Role::pushButton, "Far below", {100, 600, 50, 20});
    auto const combo = tree.add(frame, Role::comboBox, "Size", {100, 100, 80, 20});
    tree.add(combo, Role::listItem, "Closed", {0, 0, 80, 20});
    auto const bar = tree.add(frame, Role::menuBar, "", {100, 120, 400, 20});
    auto const file = tree.add(bar, Role::menuItem, "File", {100, 120, 40, 20});
    tree.add(file, Role::menuItem, "Shut", {0, 0, 80, 20});
    tree.add(frame, Role::pushButton, "Flat", {100, 100, 80, 0});
    std::vector<x11::OpenWindow> const windows{window("Main", {100, 100, 400, 300})};
    EXPECT_THAT(tree.visible(windows), ElementsAre("In", "Half", "Size", "File"));
    std::vector<std::string> away;
    for (auto const& each : tree.placed(windows)) {
        if (!each.isVisible) away.push_back(each.title);
    }
    EXPECT_THAT(away, ElementsAre("Below", "Far below")) << "one can scroll there";
}

TEST(PlacedElement, whatIsScrolledAwayIsWhereItScrollsAndWhatIsHiddenThereIsNot) {
    for (auto const toolkit : {Toolkit::gtk3, Toolkit::chromium}) {
        TestTree tree(toolkit);
        auto const frame = tree.add(-1, Role::frame, "Main", {100, 100, 400, 300});
        auto const pane = tree.add(frame, Role::scrollPane, "", {100, 150, 400, 100});
        constexpr int nowhere = -(1 << 28);
        for (auto const& [name, extents] : std::map<std::string, Extents>{{"Below", {110, 500, 80, 20}},
                                                                          {"Hidden", {110, 160, 80, 20}},
                                                                          {"Nowhere", {nowhere, nowhere, 80, 20}}}) {
            auto const button = tree.add(pane, Role::pushButton, name, extents);
            tree.tree.nodes[button].isScrolledAway = true;
        }
        auto const placed = placedElements(tree.tree, {window("Main", {100, 100, 400, 300})}, {0, 0, 4000, 3000});
        ASSERT_EQ(placed.size(), 2U);
        for (auto const& each : placed) {
            EXPECT_FALSE(each.element.isVisible);
            EXPECT_EQ(each.shownPart, (UIRect{100, 150, 400, 100})) << "where the wheel brings it";
        }
        EXPECT_EQ(placed[0].element.frame, (UIRect{110, 500, 80, 20}));
        EXPECT_EQ(placed[1].element.frame.center(), (UIPoint{300, 200}));
    }
}

TEST(PlacedElement, whatIsOffTheScreenIsNotVisible) {
    TestTree tree(Toolkit::gtk3);
    auto const frame = tree.add(-1, Role::frame, "Main", {3800, 100, 400, 300});
    tree.add(frame, Role::pushButton, "On", {3900, 110, 50, 20});
    tree.add(frame, Role::pushButton, "Off", {4050, 110, 50, 20});
    auto const main = window("Main", {3800, 100, 400, 300});
    EXPECT_THAT(tree.visible({main}), ElementsAre("On"));
    EXPECT_EQ(tree.placed({main}).size(), 2U);
}

TEST(PlacedElement, anItemOfAClosedMenuIsNotThereWhateverItsPlace) {
    for (auto const toolkit : {Toolkit::gtk3, Toolkit::qt}) {
        TestTree tree(toolkit);
        auto const frame = tree.add(-1, Role::frame, "Main", {0, 0, 400, 300});
        auto const bar = tree.add(frame, Role::menuBar, "", {0, 20, 400, 20});
        auto const sheet = tree.add(bar, Role::menu, "Sheet", {0, 20, 40, 20});
        tree.add(sheet, Role::menuItem, "Insert Rows", {0, 0, 90, 20});
        auto const main = window("Main", {0, 0, 400, 300});
        EXPECT_THAT(tree.visible({main}), ElementsAre("Sheet"));
        EXPECT_EQ(tree.placed({main}).size(), 1U);
    }
}

TEST(PlacedElement, rowsAndCellsAreEnabledThoughNotSensitive) {
    TestTree tree(Toolkit::gtk3);
    auto const frame = tree.add(-1, Role::frame, "Main", {0, 0, 400, 300});
    auto const enabled = statesOf({State::showing, State::visible, State::enabled});
    for (auto const role : {Role::tableCell, Role::tableRow, Role::listItem, Role::treeItem, Role::pushButton})
        tree.add(frame, role, role == Role::pushButton ? "Button" : "Row", {0, 0, 100, 20}, enabled);
    tree.add(frame, Role::listItem, "Disabled row", {0, 30, 100, 20}, statesOf({State::showing, State::visible}));
    for (auto const& each : tree.placed({window("Main", {0, 0, 400, 300})}))
        EXPECT_EQ(each.isEnabled, each.title == "Row") << each.role << " " << each.title;
}

TEST(PlacedElement, anOpenMenuOrListShowsInItsOwnWindow) {
    TestTree tree(Toolkit::gtk3);
    auto const frame = tree.add(-1, Role::frame, "Main", {100, 100, 400, 300});
    auto const bar = tree.add(frame, Role::menuBar, "", {100, 100, 400, 20});
    auto const file = tree.add(bar, Role::menu, "File", {100, 100, 40, 20});
    tree.add(file, Role::menuItem, "Open", {100, 120, 150, 20});
    tree.add(file, Role::menuItem, "Far down", {100, 500, 150, 20});
    tree.add(frame, Role::pushButton, "Under the menu", {110, 200, 100, 20});
    tree.add(frame, Role::pushButton, "Beside", {300, 200, 100, 20});
    auto const main = window("Main", {100, 100, 400, 300});
    EXPECT_THAT(tree.visible({popup({100, 120, 150, 410}), main}), ElementsAre("File", "Open", "Far down", "Beside"));
}

TEST(PlacedElement, anOpenListLiesOverItsWindow) {
    TestTree tree(Toolkit::qt);
    auto const frame = tree.add(-1, Role::frame, "Main", {100, 100, 400, 300});
    auto const combo = tree.add(frame, Role::comboBox, "Small", {110, 150, 200, 20});
    auto const list = tree.add(combo, Role::list, "", {110, 150, 200, 60});
    tree.add(list, Role::listItem, "Medium", {110, 170, 200, 20});
    auto const main = window("Main", {100, 100, 400, 300});
    EXPECT_THAT(tree.visible({popup({110, 150, 200, 60}), main}), ElementsAre("Medium"));
    EXPECT_THAT(tree.visible({main}), ElementsAre("Small"));
}

TEST(PlacedElement, ofJavaTheContentsOfAWindowAndTheMenuAreBelievedNotTheWindowAndTheItems) {
    TestTree tree(Toolkit::other);
    auto const dialog = tree.add(-1, Role::dialog, "Sure?", {814, 490, 264, 113});
    auto const contents = tree.add(dialog, Role::rootPane, "", {515, 312, 262, 90});
    tree.add(contents, Role::pushButton, "Yes", {559, 362, 54, 27});
    auto const menu = tree.add(contents, Role::popupMenu, "", {515, 333, 100, 46});
    tree.add(menu, Role::menuItem, "First", {516, 315, 98, 21});
    tree.add(menu, Role::menuItem, "Second", {516, 336, 98, 21});
    std::map<std::string, UIRect> frames;
    for (auto const& each : tree.placed({window("Sure?", {515, 312, 262, 90})})) frames[each.title] = each.frame;
    EXPECT_EQ(frames["Yes"], (UIRect{559, 362, 54, 27}));
    EXPECT_EQ(frames["First"], (UIRect{516, 335, 98, 21}));
    EXPECT_EQ(frames["Second"], (UIRect{516, 356, 98, 21}));
}

TEST(PlacedElement, aDialogCoversTheWindowBehindIt) {
    TestTree tree(Toolkit::gtk3);
    auto const main = tree.add(-1, Role::frame, "Main", {100, 100, 400, 300});
    tree.add(main, Role::pushButton, "Behind", {250, 250, 60, 20});
    auto const dialog = tree.add(-1, Role::dialog, "Sure?", {200, 200, 200, 100});
    tree.add(dialog, Role::pushButton, "Yes", {250, 250, 60, 20});
    auto const front = window("Sure?", {200, 200, 200, 100}), back = window("Main", {100, 100, 400, 300});
    EXPECT_THAT(tree.visible({front, back}), ElementsAre("Yes"));
    EXPECT_THAT(tree.visible({back, front}), ElementsAre("Behind"));
    auto icon = back;
    icon.isMinimized = true;
    EXPECT_THAT(tree.visible({icon, front}), ElementsAre("Yes")) << "an icon covers nothing and shows nothing";
}

TEST(PlacedElement, windowsOfOneTitleAreToldApartByTheirSizes) {
    TestTree tree(Toolkit::gtk4); // which does not say where its windows are
    for (int const width : {300, 400, 500}) {
        auto const frame = tree.add(-1, Role::frame, "Note", {0, 0, width, 200});
        tree.add(frame, Role::pushButton, std::to_string(width), {10, 10, 50, 20});
    }
    std::map<std::string, double> places;
    for (auto const& each : tree.placed({window("Note", {2000, 0, 500, 200}), window("Note", {1000, 0, 300, 200}),
                                         window("Note", {3000, 0, 400, 200})}))
        places[each.title] = each.frame.x;
    EXPECT_EQ(places, (std::map<std::string, double>{{"300", 1010}, {"400", 3010}, {"500", 2010}}));
}

TEST(PlacedElement, aButtonAroundAButtonIsOne) {
    TestTree tree(Toolkit::gtk4);
    auto const frame = tree.add(-1, Role::frame, "Main", {0, 0, 400, 300});
    auto const outer = tree.add(frame, Role::pushButton, "Options", {10, 10, 80, 30}, statesOf({State::visible}));
    tree.add(outer, Role::toggleButton, "", {10, 10, 80, 30});
    EXPECT_THAT(tree.visible({window("Main", {0, 0, 400, 300})}), ElementsAre("Options"));
}

TEST(PlacedElement, aRowIsCalledByWhatIsInIt) {
    TestTree tree(Toolkit::gtk3);
    auto const frame = tree.add(-1, Role::frame, "Main", {0, 0, 400, 300});
    auto const row = tree.add(frame, Role::listItem, "", {0, 0, 400, 30});
    auto const box = tree.add(row, Role::panel, "", {0, 0, 400, 30});
    tree.add(box, Role::label, "Inbox", {0, 0, 100, 30});
    tree.add(box, Role::label, "3 new", {100, 0, 100, 30});
    auto const field = tree.add(frame, Role::entry, "", {0, 50, 100, 20});
    tree.add(field, Role::label, "what was typed", {0, 50, 100, 20});
    auto const item = tree.add(frame, Role::listItem, "", {0, 80, 400, 30});
    tree.add(item, Role::staticText, "•", {0, 80, 10, 30});
    auto const label = tree.add(item, Role::label, "", {20, 80, 300, 30});
    tree.add(label, Role::staticText, "City", {20, 80, 50, 30});
    EXPECT_THAT(tree.visible({window("Main", {0, 0, 400, 300})}), ElementsAre("Inbox 3 new", "", "City"));
}

TEST(PlacedElement, withoutAWindowThereIsNothing) {
    TestTree tree(Toolkit::gtk3);
    auto const frame = tree.add(-1, Role::frame, "Main", {0, 0, 400, 300});
    tree.add(frame, Role::pushButton, "Save", {10, 10, 50, 20});
    EXPECT_THAT(tree.placed({}), IsEmpty());
    EXPECT_THAT(tree.placed({window("Another", {0, 0, 40, 30})}), IsEmpty());
}

TEST(PlacedElement, anIdLastsThoughItsObjectIsMadeAnew) {
    auto const ids = [](Toolkit toolkit, std::string const& generation) {
        TestTree tree(toolkit);
        auto const frame = tree.add(-1, Role::frame, "Main", {0, 0, 400, 300});
        auto const table = tree.add(frame, Role::table, "", {0, 0, 400, 300});
        for (auto const* const name : {"A1", "B1", "A1"}) {
            auto const cell = tree.add(table, Role::tableCell, name, {0, 0, 90, 20});
            tree.tree.nodes[cell].isOfCrowd = toolkit != Toolkit::qt; // which makes all cells anew
            tree.tree.nodes[cell].address.path += generation;
        }
        std::set<std::string> result;
        for (auto const& each : tree.placed({window("Main", {0, 0, 400, 300})})) result.insert(each.id);
        return result;
    };
    for (auto const toolkit : {Toolkit::gtk3, Toolkit::qt}) {
        EXPECT_EQ(ids(toolkit, "x1"), ids(toolkit, "x2"));
        EXPECT_EQ(ids(toolkit, "").size(), 3U) << "each has its own";
    }
}

TEST(PlacedElement, anIdIsOfThatObjectWithThatRoleAndTitle) {
    Address const address{":1.5", "/a/b"};
    auto const id = elementID(address, "Button", "Save");
    EXPECT_EQ(id, elementID(address, "Button", "Save"));
    for (auto const& other : {elementID({":1.6", "/a/b"}, "Button", "Save"),
                              elementID({":1.5", "/a/c"}, "Button", "Save"), elementID(address, "Row", "Save"),
                              elementID(address, "Button", "Save…"), elementID(address, "ButtonS", "ave")})
        EXPECT_NE(id, other);
}

}
