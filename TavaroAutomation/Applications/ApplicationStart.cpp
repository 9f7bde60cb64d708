#include <TavaroAutomation/Applications/Private/ApplicationStart.h>

#include <TavaroAutomation/Applications/Private/ApplicationLookup.h>
#include <TavaroAutomation/Applications/Private/LaunchCommand.h>
#include <TavaroAutomation/Applications/Private/ProgramFile.h>
#include <TavaroAutomation/Applications/Private/WindowControl.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCapture/Sources/InstalledEntries.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <set>
#include <unistd.h>
#include <vector>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using x11::OpenWindow;

[[noreturn]] void failStart(std::string const& sentence) {
    throw AutomationError(AutomationError::Kind::notStarted, sentence);
}

UIAppInfo infoOf(OpenWindow const& window, DesktopEntry const* entry) {
    auto const& identity = entry ? entry->identity : window.application;
    return {.name = identity.name, .bundleID = identity.bundleID, .title = window.title, .frame = window.frame};
}

/// A program that was started, until its window is there.
class Starting {
public:
    Starting(x11::Connection& connection, DesktopEntry const& entry, ApplicationStart const& start)
        : connection_(connection)
        , entry_(entry)
        , start_(start) {
        for (auto const& window : x11::openWindows(connection)) known_.insert(window.window);
        auto const command = launchCommand(entry, start.display);
        process_ = DetachedProcess::start(command.words, command.variables, command.folder);
        if (!process_) failStart(fmt::format("{} could not be started.", entry.identity.name));
    }
    ~Starting() { start_.programs.add(*process_); }
    Starting(Starting const&) = delete;
    Starting& operator=(Starting const&) = delete;

    OpenWindow window() {
        std::optional<OpenWindow> found;
        x11::waitUntil(
            Clock::now() + start_.longest, start_.stop,
            [&] {
                found = newWindow();
                return found || process_->hasFailed() || hasGone();
            },
            x11::betweenLooksAtWindows);
        if (found) return *found;
        failStart(whatCameOfIt());
    }

private:
    std::string whatCameOfIt() {
        auto const& name = entry_.identity.name;
        if (process_->hasFailed()) return fmt::format("{} ended before it showed a window.", name);
        if (endedAt_) {
            return fmt::format("{} ended without a window, as a program does that runs already: on another display, "
                               "or without one.",
                               name);
        }
        return fmt::format("{} was started but has shown no window for {} seconds.", name, start_.longest / 1.0s);
    }

    /// Whether all of it has ended, for longer than another that it may have told takes to show a window.
    bool hasGone() {
        bool const isOver = process_->hasEnded() && !isSessionAlive(process_->process());
        if (!isOver) endedAt_.reset();
        if (isOver && !endedAt_) endedAt_ = Clock::now();
        return isOver && Clock::now() - *endedAt_ > start_.longestAfterEnd;
    }

    std::optional<OpenWindow> newWindow() {
        auto const all = x11::openWindows(connection_);
        auto fresh = all;
        std::erase_if(fresh, [&](OpenWindow const& window) { return known_.contains(window.window); });
        auto own = fresh;
        std::erase_if(own, [&](OpenWindow const& window) { return !isOwn(window); });
        // A program that runs already may only raise its old window.
        if (own.empty() && process_->hasEnded()) own = windowsOf(all, &entry_, entry_.identity.bundleID);
        auto const found = frontWindow(own);
        return found || !endedAt_ ? found : handedOver(fresh);
    }

    /// A program that runs already may show a window that bears the name of another entry of its.
    std::optional<OpenWindow> handedOver(std::vector<OpenWindow> fresh) {
        std::erase_if(fresh, [](OpenWindow const& window) { return window.transientFor != XCB_NONE; });
        auto const found = frontWindow(fresh);
        if (found) x11::markLaunch(connection_, found->window, entry_.identity.bundleID);
        return found;
    }

    bool isOwn(OpenWindow const& window) const {
        bool const isStarted = window.pid > 0 && ::getsid(window.pid) == process_->process();
        return isStarted || window.application == entry_.identity;
    }

    x11::Connection& connection_;
    DesktopEntry const& entry_;
    ApplicationStart const& start_;
    std::set<xcb_window_t> known_;
    std::optional<DetachedProcess> process_;
    std::optional<Clock::time_point> endedAt_;
};

std::vector<OpenWindow> windowsBeside(x11::Connection& connection, OpenWindow const& window) {
    auto result = x11::openWindows(connection);
    std::erase_if(result, [&](OpenWindow const& other) {
        return other.window != window.window && (other.pid == 0 || other.pid != window.pid);
    });
    return result;
}

/// A window may grow, be replaced or be covered by a dialog while its program starts; what is in front then counts.
OpenWindow inFront(x11::Connection& connection, OpenWindow window, std::stop_token const& stop) {
    // One that was on a display which is gone, or was moved away, is on none.
    x11::bringOnDisplay(connection, window, window.frame, stop);
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (x11::bringToFront(connection, window, stop))
            return x11::openWindow(connection, x11::topLevel(connection, window.window)).value_or(window);
        auto const own = windowsBeside(connection, window);
        auto const active = std::ranges::find(own, x11::activeWindow(connection), &OpenWindow::window);
        if (active != own.end() && !active->isMinimized) return *active;
        if (auto const front = frontWindow(own)) window = *front;
    }
    failStart(
        fmt::format("The window “{}” does not come to the front: the window manager does not give it the keyboard.",
                    excerpt(window.title)));
}

/// What is to be started.
DesktopEntry entryToStart(DesktopEntry const* installed, std::string const& name) {
    if (installed) return *installed;
    std::error_code code;
    if (isProgramFile(name) && std::filesystem::is_regular_file(name, code))
        return entryOfFile(std::filesystem::absolute(name, code));
    throw AutomationError(AutomationError::Kind::noSuchProgram,
                          fmt::format("There is no application “{}”: give its name as menus show it, or its desktop "
                                      "id, such as org.gnome.TextEditor.",
                                      excerpt(name)));
}

}

UIAppInfo openApplication(x11::Connection& connection, ApplicationStart const& start) {
    auto const entries = InstalledEntries::usual(InstalledEntries::Freshness::now);
    auto const open = x11::openWindows(connection);
    auto const* const installed = entryNamed(*entries, start.name, open);
    if (auto const front = frontWindow(windowsOf(open, installed, start.name)))
        return infoOf(inFront(connection, *front, start.stop), installed);
    auto const entry = entryToStart(installed, start.name);
    auto const window = Starting(connection, entry, start).window();
    x11::waitUntilPainted(connection, window.window, start.stop);
    return infoOf(inFront(connection, window, start.stop), installed);
}

}
