#include <Tavaro/Commands/Command.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroPlatform/Queues/ParallelPair.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <memory>
#include <new>
#include <string_view>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

bool isCommand(CLI::App const& app, std::string_view name) {
    auto const commands = app.get_subcommands([](CLI::App const*) { return true; });
    return std::any_of(commands.begin(), commands.end(),
                       [&](auto const* command) { return command->get_name() == name; });
}

int run(int argc, char** argv) {
    CLI::App app{"Tavaro records your screen and turns the take into a finished video.", "tavaro"};
    app.require_subcommand(1);
    app.fallthrough(false);
    app.set_version_flag("--version", "tavaro " TAVARO_VERSION, "Prints the version and ends");
    for (auto* const declare : tavaro::commands::all) declare(app);
    if (argc > 1 && argv[1][0] != '-' && !isCommand(app, argv[1])) {
        fmt::print(stderr, "There is no command “{}”; `tavaro --help` lists them.\n", argv[1]);
        return wrongUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : wrongUsage;
    }
    return 0;
}

int fail(char const* sentence) {
    fmt::print(stderr, "{}\n", sentence);
    return failed;
}

}

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN); // a limit on the size of files is told as a full disk is, after cleaning up
    // Standard output is for results.
    spdlog::default_logger()->sinks() = {std::make_shared<spdlog::sinks::stderr_color_sink_mt>()};
    tavaro::setTaskPairRunner(tavaro::runInParallel);
    try {
        return run(argc, argv);
    } catch (tavaro::Error const& error) {
        return fail(error.what());
    } catch (std::bad_alloc const&) {
        return fail("There is not enough memory for this.");
    } catch (std::exception const& error) {
        return fail(error.what());
    }
}
