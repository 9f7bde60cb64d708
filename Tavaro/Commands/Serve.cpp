#include <Tavaro/Commands/Serve.h>

#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Application/ApplicationInstance.h>
#include <Tavaro/Model/Application/ApplicationLog.h>

#include <TavaroPlatform/Folders/Folders.h>

#include <CLI/CLI.hpp>
#include <spdlog/spdlog.h>

#include <chrono>

namespace tavaro::commands {

namespace {

/// A signal ends it: what is recorded is saved first. A second one ends the program at once.
void run(MainQueue& queue, Application& application) {
    using namespace std::chrono_literals;
    Interruption const interruption;
    bool isEnding = false;
    queue.runUntil(
        [&] {
            if (interruption.isRequested() && !isEnding) {
                isEnding = true;
                application.end();
            }
            return isEnding && !application.isBusy();
        },
        100ms);
}

void serve() {
    auto const instance = ApplicationInstance::claim();
    if (!instance) throw Error("Tavaro is already running.");
    logInto(folders::state());
    spdlog::info("Tavaro has begun.");
    MainQueue queue;
    Application application(queue);
    run(queue, application);
    spdlog::info("Tavaro has ended.");
}

}

void addServe(CLI::App& app) {
    auto* command = app.add_subcommand("serve", "Runs the application without windows, until a signal ends it");
    command->callback(serve);
}

}
