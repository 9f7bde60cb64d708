#include "../TestDesktop.h"

#include <TavaroAutomation/Applications/Private/ApplicationStart.h>
#include <TavaroAutomation/Errors/AutomationError.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

}

class ApplicationStartTest : public testing::Test {
protected:
    void SetUp() override {
        if (auto const missing = TestDesktop::missing(); !missing.empty()) GTEST_SKIP() << missing << " is missing";
        if (!TestDesktop::canRun("gtk3")) GTEST_SKIP() << "Python has no GTK 3";
        desktop.emplace();
        connection.emplace(desktop->display());
    }

    void install(std::string const& name, std::string const& command) const {
        std::ofstream(fs::path(std::getenv("XDG_DATA_HOME")) / "applications" / (name + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << command << "\n";
    }
    UIAppInfo open(std::string const& name, std::chrono::milliseconds longest = 30s,
                   std::chrono::milliseconds longestAfterEnd = 200ms) {
        return openApplication(*connection, {.name = name,
                                             .display = desktop->display(),
                                             .programs = programs,
                                             .longest = longest,
                                             .longestAfterEnd = longestAfterEnd});
    }
    std::string sentenceOf(std::string const& name, std::chrono::milliseconds longest = 30s) try {
        open(name, longest);
        return "done";
    } catch (AutomationError const& error) {
        return error.what();
    }
    /// Asks the window manager, about a window or the root.
    void ask(xcb_window_t window, char const* what, std::vector<std::uint32_t> const& values) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = connection->atom(what);
        std::ranges::copy(values, message.data.data32);
        std::array<char, 32> bytes{};
        std::memcpy(bytes.data(), &message, bytes.size());
        xcb_send_event(connection->get(), 0, connection->root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, bytes.data());
    }
    x11::OpenWindow window(std::string const& title) {
        auto const all = x11::openWindows(*connection);
        auto const found = std::ranges::find(all, title, &x11::OpenWindow::title);
        return found == all.end() ? x11::OpenWindow{} : *found;
    }

    std::optional<TestDesktop> desktop;
    std::optional<x11::Connection> connection;
    StartedPrograms programs;
};

TEST_F(ApplicationStartTest, whatShowsNoWindowIsASentenceThatSaysWhy) {
    install("Broken", "false");
    install("Told", "true");
    install("Silent", "sleep 60");
    EXPECT_EQ(sentenceOf("Broken"), "Broken ended before it showed a window.");
    EXPECT_THAT(sentenceOf("Told"), HasSubstr("ended without a window, as a program does that runs already"));
    EXPECT_EQ(sentenceOf("Silent", 500ms), "Silent was started but has shown no window for 0.5 seconds.");
    EXPECT_THAT(sentenceOf("/no/such/file"), HasSubstr("There is no application “/no/such/file”"));
}

TEST_F(ApplicationStartTest, aProgramThatIsNamedByItsFileIsStartedOnce) {
    auto const file = (fs::path(TAVARO_TESTS) / "Automation/Galleries/gtk3.py").string();
    auto const info = open(file);
    EXPECT_EQ(info.title, "Gallery of GTK 3");
    EXPECT_EQ(open(file), info);
    EXPECT_EQ(desktop->log(), "ready\n");
}

TEST_F(ApplicationStartTest, aMinimisedWindowIsBackWhereItWas) {
    desktop->install("Widget Gallery", "gtk3");
    auto const info = open("Widget Gallery");
    ask(window(info.title).window, "WM_CHANGE_STATE", {3});
    ASSERT_TRUE(eventually([&] { return window(info.title).isMinimized; }));
    EXPECT_EQ(open("Widget Gallery"), info) << "although it grows from its icon step by step";
}

TEST_F(ApplicationStartTest, aWindowOnAnotherDesktopIsShown) {
    desktop->install("Widget Gallery", "gtk3");
    auto const info = open("Widget Gallery");
    ask(connection->root(), "_NET_CURRENT_DESKTOP", {1});
    ASSERT_TRUE(eventually([&] { return !x11::isViewable(*connection, window(info.title).window); }));
    EXPECT_EQ(open("Widget Gallery"), info);
    EXPECT_TRUE(x11::isViewable(*connection, window(info.title).window));
}

TEST_F(ApplicationStartTest, aWindowThatIsRolledUpOrOnNoDisplayIsBackWhereItCanBeUsed) {
    desktop->install("Widget Gallery", "gtk3");
    auto const info = open("Widget Gallery");
    constexpr std::uint32_t add = 1;
    ask(window(info.title).window, "_NET_WM_STATE", {add, connection->atom("_NET_WM_STATE_SHADED")});
    ASSERT_TRUE(eventually([&] { return window(info.title).isShaded; }));
    EXPECT_EQ(open("Widget Gallery"), info);
    EXPECT_FALSE(window(info.title).isShaded);

    // On a display that is larger than this one, and then goes.
    constexpr std::uint32_t hasX = 1U << 8, hasY = 1U << 9;
    ask(window(info.title).window, "_NET_MOVERESIZE_WINDOW", {hasX | hasY, 1250, 750});
    ASSERT_TRUE(eventually([&] { return window(info.title).frame.x > 1000; }));
    auto const back = open("Widget Gallery");
    UIRect const display{0, 0, 1280, 800};
    EXPECT_EQ(back.frame.intersection(display), back.frame) << back.frame.x << " " << back.frame.y;
}

TEST_F(ApplicationStartTest, anEntryMayHandOverToAProgramThatRuns) {
    auto const folder = fs::path(std::getenv("XDG_RUNTIME_DIR"));
    std::ofstream(folder / "suite.py") << R"(import gi, os, sys
gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk
GLib.set_prgname("suite")
def show(title):
    Gtk.Window(title=title, default_width=300, default_height=200).show_all()
def look():
    if os.path.exists(sys.argv[1]):
        os.remove(sys.argv[1])
        show("Sums of all")
    return True
show("Words of all")
GLib.timeout_add(20, look)
Gtk.main()
)";
    auto const request = (folder / "request").string();
    install("Words", "/usr/bin/python3 " + (folder / "suite.py").string() + " " + request);
    install("Sums", "touch " + request);
    EXPECT_EQ(open("Words").title, "Words of all");
    EXPECT_EQ(open("Sums", 30s, 10s).title, "Sums of all");
    for (auto const* const name : {"Words", "Sums", "Words"})
        EXPECT_EQ(open(name).title, std::string(name) + " of all") << "though both are of one process";
    std::vector<std::string> titles;
    for (auto const& each : x11::openWindows(*connection)) {
        if (!each.isPopup) titles.push_back(each.title);
    }
    EXPECT_THAT(titles, testing::UnorderedElementsAre("Words of all", "Sums of all"));
}

TEST_F(ApplicationStartTest, anEntryThatWasWrittenJustNowIsThere) {
    desktop->install("Widget Gallery", "gtk3");
    auto const info = open("Widget Gallery");
    install("Late", "true");
    EXPECT_THAT(sentenceOf("Late"), HasSubstr("Late ended without a window"));
    EXPECT_EQ(info.name, "Widget Gallery");
}

TEST(StartedPrograms, aProgramThatHasEndedIsGone) {
    StartedPrograms programs;
    std::array<pid_t, 2> started{};
    for (auto& process : started) {
        auto program = DetachedProcess::start({findProgram("true")->string()});
        process = program->process();
        programs.add(*program);
    }
    for (auto const process : started) EXPECT_TRUE(eventually([&] { return ::kill(process, 0) != 0; }));
}

}
