#include <TavaroAutomation/Applications/Private/ApplicationStart.h>

#include <TavaroAutomation/Applications/Private/ApplicationLookup.h>
#include <TavaroAutomation/Applications/Private/LaunchCommand.h>
#include <TavaroAutomation/Applications/Private/WindowControl.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <unistd.h>
#include <vector>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using x11::OpenWindow;

// An office suite on a busy machine takes ten seconds the first time.
constexpr auto longestStart = 30s;

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
        if (!process_) fail(fmt::format("{} could not be started.", entry.identity.name));
    }

    OpenWindow window() {
        std::optional<OpenWindow> found;
        x11::waitUntil(Clock::now() + longestStart, start_.stop, [&] {
            found = newWindow();
            return found || hasFailed();
        });
        if (found) return *found;
        if (hasFailed()) fail(fmt::format("{} ended before it showed a window.", entry_.identity.name));
        fail(fmt::format("{} was started but has shown no window for {} seconds.", entry_.identity.name,
                         longestStart.count()));
    }

private:
    [[noreturn]] static void fail(std::string const& sentence) {
        throw AutomationError(AutomationError::Kind::notStarted, sentence);
    }

    bool hasFailed() { return process_->hasFailed(); }

    std::optional<OpenWindow> newWindow() {
        auto const all = x11::openWindows(connection_);
        std::vector<OpenWindow> own;
        for (auto const& window : all) {
            if (!known_.contains(window.window) && isOwn(window)) own.push_back(window);
        }
        // A program that runs already may only raise its old window.
        if (own.empty() && process_->hasEnded()) own = windowsOf(all, &entry_, entry_.identity.bundleID);
        return frontWindow(own);
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
};

/// A window may grow or be replaced while its program starts; what is in front then counts.
OpenWindow inFront(x11::Connection& connection, OpenWindow window, std::stop_token const& stop) {
    for (int attempt = 0; attempt < 3 && !x11::bringToFront(connection, window, stop); ++attempt) {
        std::vector<OpenWindow> own;
        for (auto const& other : x11::openWindows(connection)) {
            if (other.pid == window.pid) own.push_back(other);
        }
        if (auto const front = frontWindow(own)) window = *front;
    }
    return x11::openWindow(connection, x11::topLevel(connection, window.window)).value_or(window);
}

}

UIAppInfo openApplication(x11::Connection& connection, ApplicationStart const& start) {
    DesktopEntries const entries(DesktopEntries::usualFolders());
    auto const* const entry = entryNamed(entries, start.name);
    if (auto const open = frontWindow(windowsOf(x11::openWindows(connection), entry, start.name)))
        return infoOf(inFront(connection, *open, start.stop), entry);
    if (!entry) {
        throw AutomationError(
            AutomationError::Kind::noSuchProgram,
            fmt::format("There is no application “{}”: give its name as menus show it, or its desktop "
                        "id, such as org.gnome.TextEditor.",
                        excerpt(start.name)));
    }
    auto const window = Starting(connection, *entry, start).window();
    x11::waitUntilPainted(connection, window.window, start.stop);
    return infoOf(inFront(connection, window, start.stop), entry);
}

}
