#include <Tavaro/Commands/Command.h>

#include <Tavaro/Agents/AppMCPBackend.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TerminalPrompt.h>
#include <Tavaro/Control/ControlServer.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Application/ApplicationInstance.h>
#include <Tavaro/Model/Application/ApplicationLog.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Sockets/SocketError.h>
#include <TavaroPlatform/Version/Version.h>

#include <CLI/CLI.hpp>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

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

/// A signal ends it: what is recorded is saved first. A second one ends the program at once. Windows that want its
/// place get it between two calls, so that no agent loses one.
void run(MainQueue& queue, Application& application, AppMCPBackend& agents, IdleTime idle, bool const& isHandedOver) {
    using namespace std::chrono_literals;
    constexpr std::chrono::seconds letsGoWithin{3}; // of keys and buttons that an agent's call holds
    Interruption const interruption({.grace = letsGoWithin});
    bool isEnding = false;
    queue.runUntil(
        [&] {
            application.preferences().refresh(); // what is decided elsewhere answers whoever waits for it
            bool const isBusy = agents.isPerforming() || application.isBusy();
            bool const isIdle = idle.isOver(isBusy || application.newTakes().isBusy() || agents.connections() > 0);
            bool const isReplaced = isHandedOver && !isBusy && agents.calls() == 0;
            if (!isEnding && (interruption.isRequested() || isIdle || isReplaced)) {
                isEnding = true;
                agents.beginToEnd();
                application.end();
            }
            return isEnding && !application.isBusy();
        },
        100ms);
}

/// The log on the terminal, for as long as the object lives: its lines and what is asked there stay apart.
class LogAround {
public:
    explicit LogAround(TerminalPrompt& terminal) : before_(log()) {
        if (::isatty(STDOUT_FILENO) == 1) log() = {std::make_shared<Lines>(terminal, before_)};
    }
    ~LogAround() { log() = before_; }
    LogAround(LogAround const&) = delete;
    LogAround& operator=(LogAround const&) = delete;

private:
    using Sinks = std::vector<spdlog::sink_ptr>;

    class Lines final : public spdlog::sinks::base_sink<std::mutex> {
    public:
        Lines(TerminalPrompt& terminal, Sinks sinks) : terminal_(terminal), sinks_(std::move(sinks)) {}

    private:
        void sink_it_(spdlog::details::log_msg const& line) override {
            terminal_.interleave([&](std::string_view before) {
                terminal::say("{}", terminal::Lines{std::string(before)});
                for (auto const& sink : sinks_) sink->log(line);
                flush_();
            });
        }
        void flush_() override {
            for (auto const& sink : sinks_) sink->flush();
        }

        TerminalPrompt& terminal_;
        Sinks const sinks_;
    };

    static Sinks& log() { return spdlog::default_logger()->sinks(); }

    Sinks const before_;
};

MCPConsent::Ask askAt(TerminalPrompt& terminal) {
    return [&terminal](ConsentPrompt const& prompt, TerminalPrompt::Answer answer) {
        return terminal.ask({prompt.title, prompt.text + " Without windows, these settings are `tavaro mcp`."},
                            std::move(answer));
    };
}

AppMCPBackend openToAgents(MainQueue& queue, Application& application, TerminalPrompt& terminal) {
    try {
        return AppMCPBackend(queue, application, {.version = std::string(programVersion()), .ask = askAt(terminal)});
    } catch (SocketError const& error) {
        spdlog::error("Tavaro MCP: couldn't open the socket: {}", error.what());
        throw Error("Agents cannot reach Tavaro, so there is nothing to run for.");
    }
}

/// An application whom only agents can order about is one as well.
std::unique_ptr<ControlServer> openToCommands(MainQueue& queue, Application& application, bool& isHandedOver) {
    try {
        ControlServer::Settings settings;
        settings.handOver = [&isHandedOver] {
            if (!std::exchange(isHandedOver, true)) spdlog::info("Tavaro's windows take over.");
        };
        return std::make_unique<ControlServer>(queue, application, std::move(settings));
    } catch (SocketError const& error) {
        spdlog::warn("`tavaro record --toggle` does not reach Tavaro: {}", error.what());
        return nullptr;
    }
}

void serve(IdleTime::Length most) {
    auto const instance = ApplicationInstance::claim();
    if (!instance) throw Error("Tavaro is already running.");
    logInto(folders::state());
    MainQueue queue;
    TerminalPrompt terminal(queue);
    LogAround const log(terminal); // before there is another thread that logs, and until after the last
    Application application(queue);
    auto agents = openToAgents(queue, application, terminal);
    bool isHandedOver = false; // to windows
    auto const control = openToCommands(queue, application, isHandedOver);
    spdlog::info("Tavaro has begun.");
    if (auto const offer = unfinishedOffer()) terminal::tell("{}\n", *offer);
    terminal::tell("Agents reach Tavaro at “{}”. Ctrl-C ends it.\n", mcpSocketPath().string());
    application.newTakes().takeUp();
    run(queue, application, agents, IdleTime(most), isHandedOver);
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
