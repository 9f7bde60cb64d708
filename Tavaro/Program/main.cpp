#include <Tavaro/Commands/Command.h>
#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroPlatform/Queues/ParallelPair.h>
#include <TavaroPlatform/Version/Version.h>
#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <new>
#include <sstream>
#include <string_view>
#include <unistd.h>

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
    app.set_version_flag("--version", tavaro::versionOf("tavaro"), "Prints the version and ends");
    for (auto* const declare : tavaro::commands::all) declare(app);
    if (argc > 1 && argv[1][0] != '-' && !isCommand(app, argv[1])) {
        tavaro::terminal::tell("There is no command “{}”; `tavaro --help` lists them.\n", argv[1]);
        return wrongUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        std::ostringstream out, problem;
        int const code = app.exit(error, out, problem);
        tavaro::terminal::say("{}", tavaro::terminal::Lines{out.str()});
        tavaro::terminal::tell("{}", tavaro::terminal::Lines{problem.str()});
        return code == 0 ? 0 : wrongUsage;
    }
    return 0;
}

/// What is logged beside the results.
class LogLines : public spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(spdlog::details::log_msg const& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        tavaro::terminal::tell("{}", tavaro::terminal::Lines{fmt::to_string(line)});
    }
    void flush_() override {}
};

/// What is opened first would get the number of a standard stream that is closed, and be printed into.
void openStandardStreams() {
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number)
        if (fcntl(number, F_GETFD) < 0 && open("/dev/null", O_RDWR) != number) std::abort();
}

int fail(char const* sentence) {
    tavaro::terminal::tell("{}\n", sentence);
    return failed;
}

}

int main(int argc, char** argv) {
    openStandardStreams();
    tavaro::elevenLabsKey::takeFromEnvironment();
    std::signal(SIGXFSZ, SIG_IGN); // a limit on the size of files is told as a full disk is, after cleaning up
    // Standard output is for results.
    spdlog::default_logger()->sinks() = {std::make_shared<LogLines>()};
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
