#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace tavaro {

class Application;
class MainQueue;

/// Beside the socket of agents. Whoever may write here may start a recording by a program of their own as well, so
/// nobody is asked; what an agent asks for never comes this way.
std::filesystem::path controlSocketPath();

/// Answers the user's own commands and shortcuts: begins the recording that the user has chosen, or ends the take; and
/// a window that wants its place. It belongs to the main queue, and to the application, which outlive it.
class ControlServer {
public:
    struct Settings {
        std::filesystem::path socket = controlSocketPath();
        /// Comes before a take is begun or ended from here, and calls `next` at once or later: a window lets go of what
        /// the take needs. Empty: nothing is to be done.
        std::function<void(std::function<void()> next)> prepare = {};
        /// A program with windows wants to be the application in place of this one, which ends as soon as it has
        /// nothing under way. Empty: it stays.
        std::function<void()> handOver = {};
    };

    /// Answers from then on. Throws `SocketError`.
    ControlServer(MainQueue& queue, Application& application, Settings settings);
    ~ControlServer();
    ControlServer(ControlServer const&) = delete;
    ControlServer& operator=(ControlServer const&) = delete;

private:
    class Desk;

    std::unique_ptr<Desk> desk_;
};

}
