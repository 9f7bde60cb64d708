#include <Tavaro/Commands/Command.h>

#include <Tavaro/Agents/AppMCPBackend.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TerminalPrompt.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Application/ApplicationInstance.h>
#include <Tavaro/Model/Application/ApplicationLog.h>

#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Sockets/SocketError.h>

#include <CLI/CLI.hpp>
#include <spdlog/spdlog.h>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

namespace tavaro::commands {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::duration<double> usualIdleTime(600);

/// Whether nobody has used the application for so long.
class IdleTime {
public:
    using Length = std::optional<std::chrono::duration<double>>; // none: for ever

    explicit IdleTime(Length most) : most_(most) {}

    bool isOver(bool isUsed) {
        auto const now = Clock::now();
        if (isUsed) lastUse_ = now;
        return most_ && now - lastUse_ >= *most_;
    }

private:
    Length const most_;
    Clock::time_point lastUse_ = Clock::now();
};

/// A signal ends it: what is recorded is saved first. A second one ends the program at once.
void run(MainQueue& queue, Application& application, AppMCPBackend& agents, IdleTime idle) {
    using namespace std::chrono_literals;
    Interruption const interruption;
    bool isEnding = false;
    queue.runUntil(
        [&] {
            application.preferences().refresh(); // what is decided elsewhere answers whoever waits for it
            bool const isUsed = agents.connections() > 0 || agents.isPerforming() || application.isBusy();
            if (!isEnding && (interruption.isRequested() || idle.isOver(isUsed))) {
                isEnding = true;
                agents.beginToEnd();
                application.end();
            }
            return isEnding && !application.isBusy();
        },
        100ms);
}

MCPConsent::Ask askAt(TerminalPrompt& terminal) {
    return [&terminal](ConsentPrompt const& prompt, TerminalPrompt::Answer answer) {
        return terminal.ask({prompt.title, prompt.text + " Without windows, these settings are `tavaro mcp`."},
                            std::move(answer));
    };
}

AppMCPBackend openToAgents(MainQueue& queue, Application& application, TerminalPrompt& terminal) {
    try {
        return AppMCPBackend(queue, application, {.version = TAVARO_VERSION, .ask = askAt(terminal)});
    } catch (SocketError const& error) {
        spdlog::error("Tavaro MCP: couldn't open the socket: {}", error.what());
        throw Error("Agents cannot reach Tavaro, so there is nothing to run for.");
    }
}

void serve(IdleTime::Length most) {
    auto const instance = ApplicationInstance::claim();
    if (!instance) throw Error("Tavaro is already running.");
    logInto(folders::state());
    MainQueue queue;
    Application application(queue);
    TerminalPrompt terminal(queue);
    auto agents = openToAgents(queue, application, terminal);
    spdlog::info("Tavaro has begun.");
    terminal::tell("Agents reach Tavaro at “{}”. Ctrl-C ends it.\n", mcpSocketPath().string());
    run(queue, application, agents, IdleTime(most));
    spdlog::info("Tavaro has ended.");
}

}

void addServe(CLI::App& app) {
    auto* command =
        app.add_subcommand("serve", "Runs the application without windows, for agents, until a signal ends it");
    auto const seconds = std::make_shared<double>(0); // as long as none are said
    auto* const idle = command->add_option(
        "--until-idle", *seconds,
        "end also after so many seconds without a client, a recording or an export; 600 if not said");
    idle->expected(0, 1)->check(CLI::Range(0.1, 1e6));
    command->callback([seconds, idle] {
        if (idle->count() == 0) return serve(std::nullopt);
        serve(*seconds > 0 ? std::chrono::duration<double>(*seconds) : usualIdleTime);
    });
}

}
