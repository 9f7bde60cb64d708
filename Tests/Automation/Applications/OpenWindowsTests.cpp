#include "../../Capture/TestDisplay.h"

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroAutomation/Applications/Private/WindowControl.h>

#include <algorithm>
#include <unistd.h>

namespace tavaro {

namespace {

bool isOneLine(std::string const& text) {
    return text.size() < 500 && std::ranges::none_of(text, [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

}

class OpenWindowsTest : public DisplayTest {};

TEST_F(OpenWindowsTest, sayNoMoreOfThemselvesThanASentenceHolds) {
    std::string hostile = "evil\n\x1b[2J";
    while (hostile.size() < 7000) hostile += "w\tx";
    client->makeWindow({.frame = {10, 10, 100, 100}, .windowClass = hostile, .title = hostile});
    auto const windows = x11::openWindows(client->connection());
    ASSERT_EQ(windows.size(), 1u);
    auto const& it = windows.front();
    for (auto const& text :
         {it.title, it.windowClass.name, it.windowClass.instance, it.application.name, it.application.bundleID}) {
        EXPECT_TRUE(text.starts_with("evil")) << text;
        EXPECT_TRUE(isOneLine(text)) << text;
    }
    EXPECT_FALSE(it.isOfInstalled());
}

TEST_F(OpenWindowsTest, areOfTheProcessThatMadeThemWhereTheyDoNotSay) {
    client->makeWindow({.frame = {10, 10, 100, 100}, .windowClass = "Quiet"});
    EXPECT_EQ(x11::openWindows(client->connection()).front().pid, ::getpid());
}

TEST_F(OpenWindowsTest, aMarkSaysWhichEntryAskedForAWindow) {
    auto const window = client->makeWindow({.frame = {10, 10, 100, 100}, .windowClass = "Suite"});
    x11::markLaunch(client->connection(), window, "sums");
    auto const launch = x11::openWindows(client->connection()).front().launch;
    EXPECT_EQ(launch.entry, "sums");
    EXPECT_TRUE(launch.isOwn);
}

/// Without a window manager; the display is 640 × 480.
TEST_F(OpenWindowsTest, areMovedNoFurtherThanWhatIsWantedOfThemNeeds) {
    struct Case {
        PixelRect frame, part, expected;
    };
    PixelRect const anywhere{};
    for (auto const& [frame, part, expected] : {
             Case{{-150, 100, 200, 100}, {-150, 100, 20, 20}, {0, 100, 200, 100}},
             Case{{600, 460, 200, 100}, {700, 500, 20, 20}, {440, 380, 200, 100}},
             Case{{-150, 100, 200, 100}, {10, 100, 20, 20}, anywhere},
             Case{{-900, -30, 1200, 100}, {-700, 20, 20, 20}, {-200, 0, 1200, 100}},
             Case{{-900, -30, 1200, 100}, {-5000, -30, 10, 10}, {4100, 0, 1200, 100}},
         }) {
        auto const id = client->makeWindow({.frame = frame, .windowClass = "Far", .isPopup = true});
        auto const window = *x11::openWindow(client->connection(), id);
        EXPECT_EQ(x11::bringOnDisplay(client->connection(), window, x11::uiRect(part), {}), expected != anywhere);
        EXPECT_EQ(x11::frameOf(client->connection(), id), expected == anywhere ? frame : expected);
        client->destroy(id);
    }
}

}
