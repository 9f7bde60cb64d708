// The agents' server: an MCP client starts it and talks to it over its standard input and output. It does no work
// itself; the application does, over the bridge. The main thread owns the session and the streams; calls wait for the
// application on a thread of their own, started with the first.

#include <TavaroMCP/Bridge/BridgeCaller.h>
#include <TavaroMCP/Bridge/MCPSocketPath.h>
#include <TavaroMCP/Programs/StandardStreams.h>
#include <TavaroMCP/Protocol/MCPSession.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/MainQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Version/Version.h>

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

class Server {
public:
    void run();

private:
    void start(MCPSession::ToolCall call, MCPSession::Progress progress, MCPSession::Finish finish);

    StandardStreams streams_;
    MainQueue main_;
    BridgeCaller bridge_{{.socket = mcpSocketPath()}};
    std::optional<SerialQueue> calls_;
    MCPSession session_{
        {.version = std::string(programVersion()),
         .callTool = [this](auto call, auto progress,
                            auto finish) { start(std::move(call), std::move(progress), std::move(finish)); },
         .write = [this](auto line) { streams_.write(line); },
         .now = mediaClockNow}};
};

void Server::start(MCPSession::ToolCall call, MCPSession::Progress progress, MCPSession::Finish finish) {
    if (!calls_) calls_.emplace("com.tavaro.mcp.call");
    calls_->async([this, call = std::move(call), progress = std::move(progress), finish = std::move(finish)]() mutable {
        auto const report = [&](double fraction, std::string const& message) {
            main_.async([progress, fraction, message] { progress(fraction, message); });
        };
        auto result = bridge_.call(
            {std::move(call.tool), std::move(call.arguments), std::move(call.client), call.cancelled}, report);
        main_.async([finish = std::move(finish), result = std::move(result)]() mutable { finish(std::move(result)); });
    });
}

void Server::run() {
    std::signal(SIGCHLD, SIG_IGN); // an application that was started and ends leaves nothing behind
    main_.onPending([this] { streams_.wake(); });
    streams_.run({.receive = [this](auto line) { session_.receive(line); },
                  .refuse = [this](auto beginning) { session_.refuseTooLong(beginning); },
                  .woken = [this] { main_.runPending(); },
                  .isBusy = [this] { return session_.isBusy(); },
                  .beat = [this] { session_.beat(); }});
}

int wrongUsage() {
    std::fputs("usage: tavaro-mcp [--version]\n"
               "An MCP client starts this program and talks to it over its standard input and output.\n",
               stderr);
    return 2;
}

}

}

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::puts(tavaro::versionOf("tavaro-mcp").c_str());
        return 0;
    }
    if (argc > 1) return tavaro::wrongUsage();
    // Standard output is for messages.
    spdlog::default_logger()->sinks() = {std::make_shared<spdlog::sinks::stderr_color_sink_mt>()};
    try {
        tavaro::Server server;
        server.run();
        std::_Exit(0); // a call under way does not hold the program
    } catch (std::exception const& error) {
        spdlog::critical("{}", error.what());
        std::_Exit(1);
    }
}
