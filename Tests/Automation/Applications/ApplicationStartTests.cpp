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
    UIAppInfo open(std::string const& name, std::chrono::milliseconds longest = 30s) {
        return openApplication(*connection, {.name = name,
                                             .display = desktop->display(),
                                             .programs = programs,
                                             .longest = longest,
                                             .longestAfterEnd = 200ms});
    }
    std::string sentenceOf(std::string const& name, std::chrono::milliseconds longest = 30s) try {
        open(name, longest);
        return "done";
    } catch (AutomationError const& error) {
        return error.what();
    }
    /// Asks the window manager, about a window or the root.
    void ask(xcb_window_t window, char const* what, std::uint32_t value) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = connection->atom(what);
        message.data.data32[0] = value;
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
    ask(window(info.title).window, "WM_CHANGE_STATE", 3);
    ASSERT_TRUE(eventually([&] { return window(info.title).isMinimized; }));
    EXPECT_EQ(open("Widget Gallery"), info) << "although it grows from its icon step by step";
}

TEST_F(ApplicationStartTest, aWindowOnAnotherDesktopIsShown) {
    desktop->install("Widget Gallery", "gtk3");
    auto const info = open("Widget Gallery");
    ask(connection->root(), "_NET_CURRENT_DESKTOP", 1);
    ASSERT_TRUE(eventually([&] { return !x11::isViewable(*connection, window(info.title).window); }));
    EXPECT_EQ(open("Widget Gallery"), info);
    EXPECT_TRUE(x11::isViewable(*connection, window(info.title).window));
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
