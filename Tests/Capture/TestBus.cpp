#include "TestBus.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

TestBus::TestBus() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::array<char const*, 5> words{"dbus-daemon", "--session", "--nofork", "--print-address=1", nullptr};
    if (::posix_spawnp(&process_, words[0], &actions, nullptr, const_cast<char**>(words.data()), environ) != 0)
        process_ = 0;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    for (char c = 0; process_ != 0 && ::read(ends[0], &c, 1) == 1 && c != '\n';) address_ += c;
    ::close(ends[0]);
}

TestBus::~TestBus() { kill(); }

void TestBus::kill() {
    if (process_ == 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = 0;
}

}
