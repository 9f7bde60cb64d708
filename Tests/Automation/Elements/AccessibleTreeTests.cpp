#include <TavaroAutomation/Elements/Private/AccessibleTree.h>

#include <TavaroAutomation/Elements/Private/ElementRole.h>
#include <TavaroAutomation/Elements/Private/ElementTitle.h>
#include <TavaroAutomation/Elements/Private/PlacedElement.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include "../../Core/Package/TemporaryFolder.h"
#include "ChanceProgram.h"
#include "FakeProgram.h"

#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <limits>
#include <numeric>
#include <sys/socket.h>
#include <sys/un.h>

namespace tavaro::atspi {

namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;
using Clock = std::chrono::steady_clock;

FakeWidget widget(Role role, std::string name, std::vector<int> children = {}) {
    return {.role = role, .name = std::move(name), .children = std::move(children)};
}

FakeWidget hidden(FakeWidget widget) {
    widget.states = {State::sensitive};
    return widget;
}

/// Programs on a bus of their own, and who asks them.
class AccessibleTreeTest : public testing::Test {
protected:
    void SetUp() override {
        if (testBus.address().empty()) GTEST_SKIP() << "dbus-daemon is not installed";
        bus.emplace(AccessibilityBus::KnownAddress{testBus.address()});
    }

    FakeProgram& start(std::deque<FakeWidget> widgets, std::string const& toolkit = "gtk") {
        return programs.emplace_back(testBus, toolkit, std::move(widgets));
    }
    AccessibleTree walk(FakeProgram& program, Clock::duration patience = 2s) {
        auto const start = Clock::now();
        auto tree = walkTree(*bus, program.root(), {.deadline = start + patience, .stop = {}, .screen = {}});
        took = Clock::now() - start;
        return tree;
    }
    static std::vector<std::string> names(AccessibleTree const& tree) {
        std::vector<std::string> result;
        for (auto const& node : tree.nodes) result.push_back(node.name.empty() ? node.title : node.name);
        return result;
    }

    TestBus testBus;
    std::optional<AccessibilityBus> bus;
    std::deque<FakeProgram> programs;
    Clock::duration took{};
};

}

TEST_F(AccessibleTreeTest, holdsWhatShowsParentsFirst) {
    auto& program = start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3}),
                           widget(Role::panel, "", {4}), hidden(widget(Role::menu, "Closed", {5})),
                           widget(Role::pushButton, "Save"), widget(Role::menuItem, "Open")});
    auto const tree = walk(program);
    EXPECT_THAT(names(tree), ElementsAre("Window", "", "Save"));
    EXPECT_TRUE(tree.isComplete);
    EXPECT_EQ(tree.nodes.back().parent, 1);
    EXPECT_EQ(program.asked(3, "GetChildren"), 0) << "what does not show holds nothing that does";
}

TEST_F(AccessibleTreeTest, whatHasNoNameIsCalledByItsLabelElseByWhatIsSaidOfIt) {
    auto labelled = widget(Role::entry, "");
    labelled.labels = {5};
    labelled.description = "Your name, please";
    auto described = widget(Role::pushButton, "");
    described.description = "<p>Primary <b>menu</b></p>";
    auto secret = widget(Role::passwordText, "");
    auto& program = start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3, 4}), labelled,
                           described, secret, widget(Role::label, "Name:")});
    EXPECT_THAT(names(walk(program)), ElementsAre("Window", "Name:", "Primary menu", ""));
}

TEST_F(AccessibleTreeTest, whatWasTypedIsAskedOfNobody) {
    for (auto const* const toolkit : {"gtk", "GTK", "Qt", "Chromium", "Gecko", "J2SE-access-bridge"}) {
        auto field = widget(Role::entry, "");
        field.states.push_back(State::editable);
        auto& program =
            start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3, 4, 5, 6}),
                   widget(Role::passwordText, ""), field, widget(Role::spinButton, ""),
                   widget(Role::documentText, "Letter", {7}), widget(Role::slider, ""), widget(Role::paragraph, "")},
                  toolkit);
        walk(program);
        for (int const each : {2, 3, 4, 5, 6, 7})
            EXPECT_THAT(program.interfacesAsked(each), ElementsAre("Accessible", "Component")) << toolkit << each;
        EXPECT_EQ(program.asked(2, "GetChildren"), 0) << toolkit;
    }
}

TEST_F(AccessibleTreeTest, whatIsInARowThatShowsIsThereThoughGTK3SaysThatItDoesNotShow) {
    auto laidOut = [](FakeWidget widget) {
        widget.states = {State::visible, State::sensitive};
        return widget;
    };
    std::deque<FakeWidget> const widgets{widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 5}),
                                         widget(Role::listItem, "", {3}),       laidOut(widget(Role::panel, "", {4})),
                                         laidOut(widget(Role::label, "Inbox")), laidOut(widget(Role::panel, "", {6})),
                                         widget(Role::label, "On another page")};
    EXPECT_THAT(names(walk(start(widgets, "gtk"))), ElementsAre("Window", "", "", "Inbox"));
    EXPECT_THAT(names(walk(start(widgets, "Chromium"))), ElementsAre("Window", ""));
}

TEST_F(AccessibleTreeTest, aScrolledViewportOfGTK3IsWhereItsPaneIs) {
    constexpr int nowhere = std::numeric_limits<int>::min();
    auto viewport = widget(Role::viewport, "", {4});
    viewport.states = {State::visible, State::sensitive};
    viewport.extents = {nowhere, nowhere, 100, 100};
    std::deque<FakeWidget> const widgets{widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2}),
                                         widget(Role::scrollPane, "", {3}), viewport, widget(Role::listItem, "Last")};
    auto const tree = walk(start(widgets, "gtk"));
    EXPECT_THAT(names(tree), ElementsAre("Window", "", "", "Last"));
    EXPECT_EQ(tree.nodes[2].extents, tree.nodes[1].extents);
    EXPECT_THAT(names(walk(start(widgets, "Qt"))), ElementsAre("Window", ""));
}

TEST_F(AccessibleTreeTest, aPageHasItsFieldsInLabels) {
    auto const away = [](FakeWidget widget) {
        widget.states = {State::visible, State::sensitive};
        return widget;
    };
    std::deque<FakeWidget> const widgets{widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3}),
                                         widget(Role::label, "", {4, 5}),       away(widget(Role::label, "", {6, 7})),
                                         widget(Role::staticText, "City "),     widget(Role::entry, "City"),
                                         away(widget(Role::panel, "Above")),    away(widget(Role::comboBox, "Color"))};
    for (auto const* const toolkit : {"Chromium", "Gecko"}) {
        auto const tree = walk(start(widgets, toolkit));
        EXPECT_THAT(names(tree), ElementsAre("Window", "", "", "City", "City", "Color"));
        EXPECT_TRUE(tree.nodes.back().isScrolledAway);
    }
    auto& program = start(widgets, "Qt");
    EXPECT_THAT(names(walk(program)), ElementsAre("Window", ""));
    EXPECT_EQ(program.asked(2, "GetChildren"), 0);
}

TEST_F(AccessibleTreeTest, aLabelThatCanBeChosenFromAListIsARow) {
    auto choice = widget(Role::label, "Choice");
    choice.states.push_back(State::selectable);
    auto const tree = walk(start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3}),
                                  widget(Role::list, "", {4, 5}), widget(Role::panel, "", {6}), choice,
                                  widget(Role::label, "Heading"), choice}));
    std::vector<Role> roles;
    for (auto const& node : tree.nodes) roles.push_back(node.role);
    EXPECT_THAT(roles, ElementsAre(Role::frame, Role::list, Role::panel, Role::listItem, Role::label, Role::label));
    EXPECT_EQ(tree.nodes[3].ownRole, Role::label);
}

TEST_F(AccessibleTreeTest, aMenuBarOfNoSizeIsReplacedByAnother) {
    auto replaced = widget(Role::menuBar, "", {4});
    replaced.extents = {0, 21, 800, 0};
    auto& program =
        start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3}),
               widget(Role::menuBar, "", {5}), replaced, widget(Role::menu, "File"), widget(Role::menu, "File")});
    EXPECT_THAT(names(walk(program)), ElementsAre("Window", "", "File"));
}

/// Rows of cells as high and as wide as that; the first row is one cell.
std::deque<FakeWidget> sheet(std::vector<int> const& widths, std::vector<int> const& heights) {
    std::deque<FakeWidget> widgets{widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2}),
                                   widget(Role::table, "Sheet")};
    int const width = std::accumulate(widths.begin(), widths.end(), 0);
    widgets[1].extents = widgets[2].extents = {40, 30, width, std::accumulate(heights.begin(), heights.end(), 0)};
    widgets[2].childCount = std::numeric_limits<int>::max();
    int y = 30;
    for (std::size_t row = 0; row < heights.size(); y += heights[row++]) {
        int x = 40;
        for (std::size_t column = 0; column < (row == 0 ? 1 : widths.size()); x += widths[column++]) {
            auto cell = widget(Role::tableCell, fmt::format("{:02}:{:02}", row, column));
            cell.extents = {x, y, row == 0 ? width : widths[column], heights[row]};
            cell.isMadeAnew = true;
            widgets[2].children.push_back(static_cast<int>(widgets.size()));
            widgets.push_back(cell);
        }
    }
    return widgets;
}

TEST_F(AccessibleTreeTest, aSheetOfTwoBillionCellsIsOnlyLookedAtWhereItShows) {
    auto const widgets = sheet({80, 80, 12, 300, 80, 7, 80, 80}, {20, 20, 9, 20, 20, 60, 20, 20, 20, 20, 20});
    std::vector<std::string> cells{"Window", "Sheet"};
    for (std::size_t i = 3; i < widgets.size(); ++i) cells.push_back(widgets[i].name);
    auto& program = start(widgets);
    auto const tree = walk(program);
    EXPECT_TRUE(tree.isComplete);
    EXPECT_EQ(program.asked(2, "GetChildren"), 0);
    EXPECT_LE(program.asked(2, "GetAccessibleAtPoint"), 2 * static_cast<int>(cells.size()));
    std::vector<std::string> read{"Window", "Sheet"};
    for (int const child : tree.nodes[1].children) read.push_back(tree.nodes[child].name);
    EXPECT_THAT(read, ElementsAreArray(cells)) << "each once, as they are read";
}

TEST_F(AccessibleTreeTest, whereAPointFindsTheInnermostTheWidgetAroundItIsMeant) {
    auto widgets = sheet({100, 100, 100}, {40, 40, 40});
    auto const cells = widgets.size() - 3;
    for (std::size_t i = 3; i < 3 + cells; ++i) {
        auto label = widget(Role::label, "in " + widgets[i].name);
        auto const& place = widgets[i].extents;
        label.extents = {place.x + 20, place.y + 5, place.width - 40, place.height - 10};
        widgets[i].isMadeAnew = false;
        widgets[i].children.push_back(static_cast<int>(widgets.size()));
        widgets.push_back(label);
    }
    auto const tree = walk(start(widgets, "GTK"));
    EXPECT_THAT(tree.nodes[1].children, SizeIs(cells));
    for (int const child : tree.nodes[1].children) EXPECT_EQ(tree.nodes[child].role, Role::tableCell);
}

TEST_F(AccessibleTreeTest, whatHasThousandsOfChildrenAndFindsNoneIsNotCalledWhole) {
    auto table = widget(Role::table, "Sheet");
    table.childCount = 5000;
    EXPECT_FALSE(
        walk(start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2}), table})).isComplete);
}

TEST_F(AccessibleTreeTest, aHundredThousandRowsAreThoseThatShow) {
    std::deque<FakeWidget> widgets{widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2}),
                                   widget(Role::scrollPane, "", {3}), widget(Role::list, "Long list")};
    widgets[1].extents = widgets[2].extents = {0, 0, 400, 300};
    widgets[3].extents = {0, -2000, 400, 2'000'000};
    for (int i = 0; i < 100'000; ++i) {
        auto row = widget(Role::listItem, "Row " + std::to_string(i));
        row.extents = {0, -2000 + i * 20, 400, 20};
        widgets[3].children.push_back(static_cast<int>(widgets.size()));
        widgets.push_back(row);
    }
    auto& program = start(std::move(widgets));
    auto const tree = walk(program);
    EXPECT_THAT(tree.nodes, SizeIs(3 + 15));
    EXPECT_THAT(names(tree), AllOf(Contains("Row 100"), Contains("Row 114"), Not(Contains("Row 115"))));
    EXPECT_TRUE(tree.isComplete);
}

TEST_F(AccessibleTreeTest, thousandsThatNoPointFindsAreFoundByTheirPlaces) {
    std::deque<FakeWidget> widgets{widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2}),
                                   widget(Role::panel, "Long box")};
    widgets[1].extents = {0, 0, 400, 300};
    widgets[2].extents = {0, -25'000, 400, 85'000};
    widgets[2].findsNoPoint = true;
    for (int i = 0; i < 2500; ++i) {
        auto row = widget(Role::pushButton, "Row " + std::to_string(i));
        row.extents = {17, -25'000 + i * 34 + 5, 366, 24};
        widgets[2].children.push_back(static_cast<int>(widgets.size()));
        widgets.push_back(row);
    }
    auto const tree = walk(start(std::move(widgets), "GTK"));
    EXPECT_THAT(names(tree), AllOf(Contains("Row 736"), Contains("Row 743"), Not(Contains("Row 745"))));
    EXPECT_THAT(tree.nodes[1].children, SizeIs(9));
    EXPECT_TRUE(tree.isComplete);
}

TEST_F(AccessibleTreeTest, whatIsBeyondTheScreenIsNotLookedFor) {
    auto widgets = sheet(std::vector(40, 100), std::vector(40, 50)); // cells, the first row of one
    auto& program = start(widgets);
    auto const tree =
        walkTree(*bus, program.root(), {.deadline = Clock::now() + 2s, .stop = {}, .screen = Extents{0, 0, 240, 130}});
    EXPECT_THAT(names(tree), UnorderedElementsAre("Window", "", "00:00", "01:00", "01:01"));
    EXPECT_TRUE(tree.isComplete);
}

TEST_F(AccessibleTreeTest, whatIsInAContainerThatIsScrolledAwayIsToldApart) {
    auto const away = [](FakeWidget widget) {
        widget.states = {State::visible, State::sensitive};
        return widget;
    };
    auto neverLaidOut = away(widget(Role::panel, "", {9}));
    neverLaidOut.extents = {0, 0, 1, 1};
    std::deque<FakeWidget> widgets{widget(Role::application, "app", {1}),
                                   widget(Role::frame, "Window", {2, 6}),
                                   widget(Role::viewport, "", {3, 8}),
                                   away(widget(Role::filler, "", {4, 5})),
                                   away(widget(Role::pushButton, "Far down")),
                                   hidden(widget(Role::pushButton, "Hidden")),
                                   widget(Role::pageTab, "Shut", {7}),
                                   away(widget(Role::filler, "", {4})),
                                   neverLaidOut,
                                   away(widget(Role::pushButton, "Folded"))};
    for (auto const* const toolkit : {"gtk", "Chromium"}) {
        widgets[2].role = std::string(toolkit) == "gtk" ? Role::viewport : Role::documentWeb;
        auto const tree = walk(start(widgets, toolkit));
        EXPECT_THAT(names(tree), ElementsAre("Window", "", "Shut", "", "Far down")) << toolkit;
        EXPECT_TRUE(tree.nodes.back().isScrolledAway) << toolkit;
    }
}

/// Lines of buttons, some of them closed, in panels.
std::deque<FakeWidget> manyButtons(int lines, int inALine) {
    std::deque<FakeWidget> widgets{widget(Role::application, "app", {1}), widget(Role::frame, "Window")};
    for (int line = 0; line < lines; ++line) {
        auto const panel = static_cast<int>(widgets.size());
        widgets[1].children.push_back(panel);
        widgets.push_back(line % 7 == 3 ? hidden(widget(Role::panel, "")) : widget(Role::panel, ""));
        for (int i = 0; i < inALine; ++i) {
            widgets[panel].children.push_back(static_cast<int>(widgets.size()));
            widgets.push_back(widget(Role::pushButton, fmt::format("Button {}.{}", line, i)));
        }
    }
    return widgets;
}

TEST_F(AccessibleTreeTest, whatShowsIsThereThoughThereIsNoTimeForWhatIsScrolledAway) {
    auto widgets = manyButtons(40, 40);
    for (std::size_t line = 0; line < widgets[1].children.size(); ++line) {
        auto& panel = widgets[widgets[1].children[line]];
        panel.extents.y = static_cast<int>(line) * 100; // the window is as high as one
        for (int const button : panel.children) widgets[button].extents.y = panel.extents.y;
    }
    auto& away = widgets[widgets[widgets[1].children[1]].children[0]];
    away.isSilent = true;
    auto const tree = walk(start(widgets, "Qt"), 1s);
    EXPECT_FALSE(tree.isComplete);
    EXPECT_THAT(names(tree), AllOf(Contains("Button 0.0"), Contains("Button 0.39")));
}

TEST_F(AccessibleTreeTest, aProgramThatSaysAllAtOnceIsReadAsOneThatDoesNot) {
    auto widgets = manyButtons(30, 40);
    auto const tree = walk(start(widgets));
    widgets[0].saysAllAtOnce = true;
    auto& program = start(widgets);
    EXPECT_EQ(names(walk(program)), names(tree));
    auto const last = static_cast<int>(widgets.size()) - 1;
    EXPECT_EQ(program.asked(last, "GetExtents"), 1);
    EXPECT_EQ(program.asked(last, "GetState") + program.asked(last, "Get"), 0);
}

TEST_F(AccessibleTreeTest, aHundredThousandWidgetsAreCutShortInTime) {
    auto& program = start(manyButtons(100, 1000));
    auto const tree = walk(program);
    EXPECT_FALSE(tree.isComplete);
    EXPECT_GT(tree.nodes.size(), 100U);
    EXPECT_LT(took, 2500ms);
}

TEST_F(AccessibleTreeTest, aProgramThatTalksNonsenseIsReadAsFarAsItMakesSense) {
    auto widgets = manyButtons(12, 6);
    widgets[0].saysAllAtOnce = true;
    for (std::size_t i = 4; i < widgets.size(); i += 3) widgets[i].talksNonsense = true;
    auto& program = start(widgets);
    for (int round = 0; round < 30; ++round) {
        auto const tree = walk(program);
        EXPECT_THAT(names(tree), Contains("Button 0.0"));
        EXPECT_LT(took, 1s);
    }
}

/// What people can click in it, and what follows for every listing.
void expectSound(AccessibleTree const& tree) {
    std::vector<x11::OpenWindow> const windows{{.window = 1, .title = "Save", .contents = {0, 0, 400, 300}},
                                               {.window = 2, .contents = {50, 50, 100, 90}, .isPopup = true}};
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        auto const& node = tree.nodes[i];
        EXPECT_LT(node.parent, static_cast<int>(i));
        for (int const child : node.children) EXPECT_EQ(tree.nodes[static_cast<std::size_t>(child)].parent, i);
    }
    for (auto const& each : placedElements(tree, windows, {0, 0, 1000, 800})) {
        auto const& [element, place] = std::pair(each.element, each.shownPart);
        EXPECT_FALSE(element.role.empty());
        EXPECT_LE(element.title.size(), 4 * 201U);
        EXPECT_EQ(element.title.find_first_of("\n\t\x1b"), std::string::npos);
        EXPECT_TRUE(std::isfinite(element.frame.x + element.frame.y + place.x + place.y));
        EXPECT_TRUE(!element.isVisible || !place.intersection({0, 0, 1000, 800}).isEmpty());
    }
}

TEST_F(AccessibleTreeTest, aProgramThatAnswersByChanceIsReadInTimeAndLeavesTheBusSound) {
    ChanceProgram program(testBus);
    auto& sound = start({widget(Role::application, "app", {1}), widget(Role::frame, "Other")});
    auto const* const wanted = std::getenv("TAVARO_CHANCE_ROUNDS");
    unsigned const rounds = wanted ? static_cast<unsigned>(std::atoi(wanted)) : 300;
    std::vector<Clock::duration> times;
    std::size_t nodes = 0;
    for (unsigned seed = 0; seed < rounds; ++seed) {
        SCOPED_TRACE(fmt::format("seed {}", seed));
        program.begin(seed);
        auto const start = Clock::now();
        auto const tree =
            walkTree(*bus, program.root(), {.deadline = start + 50ms, .stop = {}, .screen = Extents{0, 0, 1000, 800}});
        times.push_back(Clock::now() - start);
        nodes += tree.nodes.size();
        expectSound(tree);
        if (seed % 50 == 0) {
            EXPECT_THAT(names(walk(sound)), ElementsAre("Other"));
        }
    }
    EXPECT_GT(nodes, rounds) << "it says something, too";
    std::ranges::sort(times);
    EXPECT_LT(times[times.size() / 2], 200ms);
}

TEST_F(AccessibleTreeTest, aProgramThatHangsCostsNoMoreThanTheTimeGivenAndTheNextAnswers) {
    auto silent = widget(Role::panel, "");
    silent.isSilent = true;
    auto& hanging = start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3}), silent,
                           widget(Role::pushButton, "Save")});
    auto const tree = walk(hanging, 300ms);
    EXPECT_FALSE(tree.isComplete);
    EXPECT_THAT(names(tree), Contains("Save"));
    EXPECT_LT(took, 600ms);
    auto& sound = start({widget(Role::application, "app", {1}), widget(Role::frame, "Other")});
    EXPECT_THAT(names(walk(sound)), ElementsAre("Other"));
    EXPECT_TRUE(walk(sound).isComplete);
}

TEST_F(AccessibleTreeTest, ofAProgramThatHungNothingIsAskedAfterwards) {
    auto& program = start({widget(Role::application, "app", {1}), widget(Role::frame, "Window")});
    program.hang(true);
    EXPECT_TRUE(walk(program, 100ms).nodes.empty());
    program.hang(false);
    EXPECT_EQ(bus->run(Clock::now() + 1s), AccessibilityBus::Outcome::allAnswered);
    EXPECT_EQ(program.asked(0, "GetChildren"), 0) << "who asked is gone";
    EXPECT_THAT(names(walk(program)), ElementsAre("Window"));
}

TEST_F(AccessibleTreeTest, aProgramThatDiesInTheMiddleEndsTheWalk) {
    auto deadly = widget(Role::pushButton, "Crash");
    deadly.endsProgram = true;
    auto& program = start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2, 3}), deadly,
                           widget(Role::panel, "", {})});
    walk(program, 5s);
    EXPECT_LT(took, 2s);
    EXPECT_TRUE(walk(program).nodes.empty());
}

TEST_F(AccessibleTreeTest, aStopIsSeenAtOnce) {
    auto silent = widget(Role::frame, "Window");
    silent.isSilent = true;
    auto& program = start({widget(Role::application, "app", {1}), silent});
    std::stop_source stop;
    stop.request_stop();
    auto const start = Clock::now();
    EXPECT_FALSE(
        walkTree(*bus, program.root(), {.deadline = start + 5s, .stop = stop.get_token(), .screen = {}}).isComplete);
    EXPECT_LT(Clock::now() - start, 200ms);
}

TEST_F(AccessibleTreeTest, whatIsItsOwnDescendantIsThereOnce) {
    auto& program = start({widget(Role::application, "app", {1}), widget(Role::frame, "Window", {2}),
                           widget(Role::panel, "", {1, 3, 3}), widget(Role::pushButton, "Once", {2})});
    EXPECT_THAT(names(walk(program)), ElementsAre("Window", "", "Once"));
}

TEST_F(AccessibleTreeTest, whenTheBusGoesASentenceSaysSo) {
    auto& program = start({widget(Role::application, "app", {1}), widget(Role::frame, "Window")});
    testBus.kill();
    EXPECT_THROW(walk(program), AutomationError);
    EXPECT_FALSE(bus->isOpen());
    EXPECT_THROW(AccessibilityBus(AccessibilityBus::KnownAddress{testBus.address()}), AutomationError);
}

/// Takes connections and says nothing.
struct SilentBus {
    SilentBus() {
        sockaddr_un place{.sun_family = AF_UNIX, .sun_path = {}};
        path.copy(place.sun_path, sizeof place.sun_path - 1);
        EXPECT_EQ(::bind(listening.get(), reinterpret_cast<sockaddr*>(&place), sizeof place), 0);
        EXPECT_EQ(::listen(listening.get(), 5), 0);
    }

    TemporaryFolder const folder;
    std::string const path = (folder.path() / "bus").string();
    FileDescriptor const listening{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

TEST(AccessibilityBus, aSessionThatIsSilentOrNotThereIsASentenceInTime) {
    SilentBus const silent;
    for (auto const& session : {silent.path, silent.path + "-missing"}) {
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + session).c_str(), 1);
        auto const start = Clock::now();
        EXPECT_THROW(AccessibilityBus(std::string(":9999")), AutomationError) << session;
        EXPECT_LT(Clock::now() - start, 4s) << session;
    }
}

TEST(AccessibilityBus, aBusThatIsSilentIsASentenceInTime) {
    SilentBus const silent;
    AccessibilityBus bus(AccessibilityBus::KnownAddress{"unix:path=" + silent.path});
    bus.programs([](auto const&) {});
    EXPECT_THROW(bus.runOnBus(Clock::now() + 200ms), AutomationError);
}

TEST(ElementTitle, isOneReadableLine) {
    EXPECT_EQ(readableTitle(" New\n\tTab ", Toolkit::gtk3), "New Tab");
    EXPECT_EQ(readableTitle("a < b > c", Toolkit::qt), "a < b > c");
    EXPECT_EQ(readableTitle("<span style='x'>Pi</span> [Ctrl+P]", Toolkit::qt), "Pi [Ctrl+P]");
    EXPECT_EQ(readableTitle("x<sup>3</sup><br/>cubed <x", Toolkit::qt), "x3 cubed <x");
    EXPECT_EQ(readableTitle("<None>", Toolkit::qt), "<None>");
    EXPECT_EQ(readableTitle("vector<b>", Toolkit::gtk3), "vector<b>");
    auto const text = readableTitle(std::string(10'240, 'x') + "ä", Toolkit::gtk3);
    EXPECT_EQ(text, std::string(200, 'x') + "…");
    for (auto const* const name : {"GtkButton", "AdwGizmo", "EditorStatusbar"}) {
        EXPECT_EQ(readableTitle(name, Toolkit::gtk4), "") << name;
        EXPECT_EQ(readableTitle(name, Toolkit::gtk3), name);
    }
    EXPECT_EQ(readableTitle("7 7", Toolkit::gtk4), "7");
    EXPECT_EQ(readableTitle("_Inform Inform", Toolkit::gtk4), "Inform");
    EXPECT_EQ(readableTitle("_Inform Inform", Toolkit::qt), "_Inform Inform");
    EXPECT_EQ(readableTitle("Gtkwave 3", Toolkit::gtk4), "Gtkwave 3");
}

TEST(ElementRole, everyRoleWithANameIsClickableAndFieldsAreNamedAsSuch) {
    States const none;
    for (std::uint32_t number = 0; number < 140; ++number) {
        Role const role{number};
        EXPECT_TRUE(elementRole(role, none).empty() || isClickable(role)) << number;
        EXPECT_FALSE(isClickable(role) && isLabel(role)) << number;
    }
    States const editable(1ULL << static_cast<unsigned>(State::editable));
    EXPECT_EQ(elementRole(Role::text, none), "") << "text to read";
    for (auto const role : {Role::text, Role::entry, Role::passwordText, Role::autocomplete})
        EXPECT_EQ(elementRole(role, editable), "TextField");
}

}
