#include "ProcessFixture.h"

#include <Tavaro/Commands/Serve.h>

#include <TavaroCore/Errors/Error.h>

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <vector>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

/// As `main` runs it, in a process of its own.
[[noreturn]] void serve(std::string const& error) {
    if (!std::freopen(error.c_str(), "w", stderr)) _exit(3);
    CLI::App app;
    commands::addServe(app);
    try {
        app.parse(std::vector<std::string>{"serve"});
    } catch (Error const& failure) {
        std::fputs(failure.what(), stderr);
        std::fflush(stderr);
        _exit(1);
    }
    _exit(0);
}

class Serve : public ProcessFixture {
protected:
    Serve() { setenv("XDG_STATE_HOME", path("state").c_str(), 1); }
    ~Serve() override { unsetenv("XDG_STATE_HOME"); }

    RunningProcess started(std::string const& name) {
        auto const pid = fork();
        if (pid == 0) serve(path(name));
        return {pid, path(name + ".out"), path(name)};
    }
    bool hasLogged(std::string const& line) const {
        return fs::exists(path(log)) && read(log).find(line) != std::string::npos;
    }

    std::string const log = "state/Tavaro/tavaro.log";
};

}

TEST_F(Serve, oneRunsForAUserUntilASignalEndsItAndThenTheNext) {
    for (int const signal : {SIGTERM, SIGINT, SIGKILL}) {
        fs::remove_all(path("state"));
        auto first = started("first");
        ASSERT_TRUE(becomesTrue([&] { return hasLogged("has begun"); })) << read("first");
        auto const second = started("second").wait();
        EXPECT_EQ(second.exitCode, 1);
        EXPECT_EQ(second.error, "Tavaro is already running.");
        first.send(signal);
        EXPECT_EQ(first.wait().exitCode, signal == SIGKILL ? 128 + SIGKILL : 0);
        EXPECT_EQ(hasLogged("has ended"), signal != SIGKILL);
        EXPECT_EQ(fs::status(path("state/Tavaro")).permissions(), fs::perms::owner_all);
    }
}
