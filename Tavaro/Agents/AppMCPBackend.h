#pragma once

#include <Tavaro/Agents/MCPConsent.h>

#include <TavaroMCP/Bridge/MCPSocketPath.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

namespace tavaro {

class Application;
class MainQueue;

/// The application as agents reach it: listens for the bridge, asks whether a client may, performs its calls and
/// answers. Consent and tools are the main queue's, to which this object belongs too; each connection waits for its
/// answer on a thread of its own.
class AppMCPBackend {
public:
    struct Settings {
        std::string version;
        MCPConsent::Ask ask; // without it nobody can be asked
        std::filesystem::path socket = mcpSocketPath();
    };

    /// Answers from then on. Throws `SocketError`.
    AppMCPBackend(MainQueue& queue, Application& application, Settings settings);
    /// Calls that have no result by then are interrupted.
    ~AppMCPBackend();
    AppMCPBackend(AppMCPBackend const&) = delete;
    AppMCPBackend& operator=(AppMCPBackend const&) = delete;

    /// No call is begun any more, while those under way go on.
    void beginToEnd();
    std::size_t connections() const;
    /// Those that wait for a result, also for one that somebody is asked for.
    std::size_t calls() const;
    /// Whether something that a client asked for is under way, which goes on without the client. The main queue's.
    bool isPerforming() const;

private:
    class Desk;

    std::unique_ptr<Desk> desk_;
};

}
