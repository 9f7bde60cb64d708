#include "TestBus.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

namespace {

/// A bus's configuration: the usual one, but for what it would start for programs that ask for the desktop's portal,
/// which no test needs, and which leaves mounts behind.
std::filesystem::path configured(std::filesystem::path const& folder) {
    std::filesystem::create_directory(folder / "services");
    for (std::string const name : {"org.freedesktop.portal.Desktop", "org.freedesktop.portal.Documents"})
        std::ofstream(folder / "services" / (name + ".service"))
            << "[D-BUS Service]\nName=" << name << "\nExec=/bin/false\n";
    std::ofstream(folder / "bus.conf") << "<busconfig><servicedir>" << (folder / "services").string()
                                       << "</servicedir><include>/usr/share/dbus-1/session.conf</include></busconfig>";
    return folder / "bus.conf";
}

}

TestBus::TestBus() {
    auto pattern = (std::filesystem::temp_directory_path() / "tavaro-bus-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) return;
    folder_ = pattern;
    auto const configuration = "--config-file=" + configured(folder_).string();
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::array<char const*, 5> words{"dbus-daemon", configuration.c_str(), "--nofork", "--print-address=1", nullptr};
    if (::posix_spawnp(&process_, words[0], &actions, nullptr, const_cast<char**>(words.data()), environ) != 0)
        process_ = 0;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    for (char c = 0; process_ != 0 && ::read(ends[0], &c, 1) == 1 && c != '\n';) address_ += c;
    ::close(ends[0]);
}

TestBus::~TestBus() {
    kill();
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

void TestBus::kill() {
    if (process_ == 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = 0;
}

}
