#include "TestDesktop.h"

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

pid_t startQuietly(std::vector<char const*> words) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    for (int const stream : {STDOUT_FILENO, STDERR_FILENO})
        ::posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
    words.push_back(nullptr);
    pid_t process = 0;
    if (::posix_spawnp(&process, words[0], &actions, nullptr, const_cast<char**>(words.data()), environ) != 0)
        process = 0;
    ::posix_spawn_file_actions_destroy(&actions);
    return process;
}

}

std::string TestDesktop::missing() {
    if (!TestDisplay::isInstalled()) return "Xvfb";
    if (!findProgram("openbox")) return "openbox";
    if (!findProgram("dbus-daemon")) return "dbus-daemon";
    return fs::exists("/usr/share/dbus-1/services/org.a11y.Bus.service") ? "" : "at-spi2-core";
}

bool TestDesktop::canRun(std::string const& gallery) {
    std::string const toolkit = gallery == "gtk3" ? "3.0" : "4.0";
    auto const script = gallery == "qt5"
                            ? "import PyQt5.QtWidgets"
                            : "import gi; gi.require_version('Gtk', '" + toolkit + "'); from gi.repository import Gtk";
    pid_t const process = startQuietly({"/usr/bin/python3", "-c", script.c_str()});
    int status = 1;
    return process != 0 && ::waitpid(process, &status, 0) == process && status == 0;
}

TestDesktop::TestDesktop() {
    display_.emplace(1280, 800);
    for (auto const* const name : {"runtime", "data/applications", "config", "cache"})
        fs::create_directories(folder_.path() / name);
    fs::permissions(folder_.path() / "runtime", fs::perms::owner_all);
    setenv("DISPLAY", display().c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (folder_.path() / "runtime").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder_.path() / "data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder_.path() / "config").c_str(), 1);
    setenv("XDG_CACHE_HOME", (folder_.path() / "cache").c_str(), 1);
    setenv("GALLERY_LOG", (folder_.path() / "log").c_str(), 1);
    unsetenv("AT_SPI_BUS_ADDRESS");
    session_.emplace();
    setenv("DBUS_SESSION_BUS_ADDRESS", session_->address().c_str(), 1);
    windowManager_ = startQuietly({"openbox"});
    x11::Connection connection(display());
    eventually([&] { return !connection.cardinals(connection.root(), "_NET_SUPPORTING_WM_CHECK").empty(); });
}

TestDesktop::~TestDesktop() {
    x11::Connection connection(display());
    for (auto const& window : x11::openWindows(connection)) {
        if (window.pid > 1 && window.pid != ::getpid()) ::kill(window.pid, SIGKILL);
    }
    if (windowManager_ == 0) return;
    ::kill(windowManager_, SIGKILL);
    ::waitpid(windowManager_, nullptr, 0);
}

void TestDesktop::install(std::string const& name, std::string const& gallery, std::string const& arguments) const {
    auto const program = fs::path(TAVARO_TESTS) / "Automation/Galleries" / (gallery + ".py");
    std::ofstream(folder_.path() / "data/applications" / (gallery + ".desktop"))
        << "[Desktop Entry]\nType=Application\nName=" << name << "\nStartupWMClass=" << gallery
        << ".py\nExec=/usr/bin/python3 \"" << program.string() << "\" " << arguments << " %U\n";
}

std::string TestDesktop::log() const {
    std::ostringstream text;
    text << std::ifstream(folder_.path() / "log").rdbuf();
    return text.str();
}

}
