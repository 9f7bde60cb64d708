#include "TestSession.h"

#include "TestDisplay.h"

#include <TavaroCapture/Accessibility/BusConnection.h>
#include <TavaroCapture/PipeWire/Private/Connection.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

ScopedVariable::ScopedVariable(std::string name, std::string const& value) : name_(std::move(name)) {
    if (char const* const before = std::getenv(name_.c_str())) before_ = before;
    setenv(name_.c_str(), value.c_str(), 1);
}

ScopedVariable::~ScopedVariable() {
    if (name_.empty()) return;
    if (before_)
        setenv(name_.c_str(), before_->c_str(), 1);
    else
        unsetenv(name_.c_str());
}

TestProcess::TestProcess(std::vector<std::string> const& command, std::filesystem::path const& log) {
    std::vector<char*> words;
    for (auto const& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    process_ = fork();
    if (process_ != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    int const output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(output, 1);
    dup2(output, 2);
    execvp(words[0], words.data());
    _exit(127);
}

void TestProcess::kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

namespace {

constexpr char const* busConfiguration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path=BUS</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>)";

void expect(bool isThere, char const* what) {
    if (!isThere) throw std::runtime_error(std::string(what) + " did not start");
}

}

bool TestSession::isInstalled() {
    return std::system("command -v pipewire >/dev/null 2>&1 && command -v wireplumber >/dev/null 2>&1 && "
                       "command -v dbus-daemon >/dev/null 2>&1") == 0;
}

TestSession::TestSession(Sound sound) {
    using namespace std::chrono_literals;
    auto const home = folder().string();
    for (auto const* const name : {"HOME", "XDG_RUNTIME_DIR", "XDG_STATE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        variables_.emplace_back(name, home);
    variables_.emplace_back("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + home + "/bus");
    std::string configuration = busConfiguration;
    configuration.replace(configuration.find("BUS<"), 3, home + "/bus");
    std::ofstream(folder() / "bus.conf") << configuration;
    bus_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--config-file", home + "/bus.conf"});
    expect(eventually([&] { return std::filesystem::exists(folder() / "bus"); }), "dbus-daemon");
    server_.emplace(std::vector<std::string>{"pipewire"}, folder() / "pipewire.log");
    expect(eventually([&] { return pipewire::Connection().settle(1s); }), "pipewire");
    links_.emplace(std::vector<std::string>{"wireplumber"}, folder() / "wireplumber.log");
    if (sound == Sound::on) {
        sound_.emplace(std::vector<std::string>{"pipewire-pulse"}, folder() / "pipewire-pulse.log");
        expect(eventually([&] { return std::filesystem::exists(folder() / "pulse" / "native"); }), "pipewire-pulse");
    }
}

void TestSession::startAccessibility() {
    accessibility_.emplace(std::vector<std::string>{"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"},
                           folder() / "accessibility.log");
    expect(eventually([] { return !atspi::busAddress({}).empty(); }), "the bus of at-spi2-core");
}

}
