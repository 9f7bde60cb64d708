#include "TestTerminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tavaro {

TestTerminal::TestTerminal(std::function<void()> const& work) {
    process_ = ::forkpty(&descriptor_, nullptr, nullptr, nullptr);
    if (process_ == 0) {
        work();
        ::_exit(0);
    }
    EXPECT_GT(process_, 0);
}

TestTerminal::~TestTerminal() {
    close();
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
}

void TestTerminal::type(std::string const& text) const {
    EXPECT_EQ(::write(descriptor_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

std::string TestTerminal::shownUntil(std::string const& end) const {
    constexpr int patience = 10'000;
    std::string shown;
    while (!shown.ends_with(end)) {
        pollfd waiting{descriptor_, POLLIN, 0};
        if (::poll(&waiting, 1, patience) <= 0) return shown + " … and no more";
        char piece = 0; // one at a time, so that nothing is read past the end
        if (::read(descriptor_, &piece, 1) <= 0) return shown + " … and its end";
        shown += piece;
    }
    return shown;
}

void TestTerminal::close() {
    int const descriptor = std::exchange(descriptor_, -1);
    if (descriptor >= 0) ::close(descriptor);
}

int TestTerminal::exitCode() {
    int status = 0;
    ::waitpid(std::exchange(process_, 0), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}
