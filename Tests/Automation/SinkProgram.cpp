#include "SinkProgram.h"

#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

namespace {

// Debian's own, which has the toolkits' bindings, whichever comes first in the search path.
constexpr char const* python = "/usr/bin/python3";

std::string importing(SinkToolkit toolkit) {
    if (toolkit == SinkToolkit::chromium) return "import shutil, sys; sys.exit(not shutil.which(\"chromium\"))";
    if (toolkit == SinkToolkit::qt5) return "import PyQt5.QtWidgets";
    std::string const version = toolkit == SinkToolkit::gtk3 ? "3.0" : "4.0";
    return "import gi; gi.require_version(\"Gtk\", \"" + version + "\"); from gi.repository import Gtk";
}

char const* scriptOf(SinkToolkit toolkit) {
    if (toolkit == SinkToolkit::chromium) return "chromium.py";
    return toolkit == SinkToolkit::qt5 ? "qt.py" : "gtk.py";
}

xcb_window_t windowTitled(x11::Connection& connection, std::string const& title) {
    auto const tree = connection.ask<xcb_query_tree, xcb_query_tree_reply>(connection.root());
    auto const* const children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (connection.text(children[i], "WM_NAME") == title && x11::isViewable(connection, children[i]))
            return children[i];
    }
    return XCB_NONE;
}

}

bool SinkProgram::isInstalled(SinkToolkit toolkit) {
    auto const command = std::string("DISPLAY= ") + python + " -c '" + importing(toolkit) + "' >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

SinkProgram::SinkProgram(TestDisplay const& display, SinkToolkit toolkit) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    output_ = FileDescriptor(ends[0]);
    FileDescriptor const written(ends[1]);
    process_ = fork();
    if (process_ == 0) {
        dup2(written.get(), 1);
        dup2(open("/dev/null", O_WRONLY), 2);
        setenv("DISPLAY", display.name().c_str(), 1);
        setenv("GDK_BACKEND", "x11", 1);
        setenv("NO_AT_BRIDGE", "1", 1); // these tests need no accessibility bus
        unsetenv("WAYLAND_DISPLAY");
        std::string const script = std::string(TAVARO_TESTS) + "/Automation/Sinks/" + scriptOf(toolkit);
        execl(python, python, script.c_str(), toolkit == SinkToolkit::gtk3 ? "3" : "4", nullptr);
        _exit(127);
    }
    fcntl(output_.get(), F_SETFL, O_NONBLOCK);
}

SinkProgram::~SinkProgram() {
    ::kill(process_, SIGTERM);
    ::kill(process_, SIGCONT);
    waitpid(process_, nullptr, 0);
}

bool SinkProgram::awaitReady(TestClient& client) {
    bool const isReady = eventually([&] {
        listen();
        return said_.contains("ready");
    });
    auto const window = windowTitled(client.connection(), "Sink");
    if (!isReady || window == XCB_NONE) return false;
    client.move(window, {0, 0, 600, 480});
    xcb_set_input_focus(client.connection().get(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    client.connection().synchronize();
    return true;
}

void SinkProgram::freeze() const { ::kill(process_, SIGSTOP); }

std::string SinkProgram::text() {
    listen();
    auto const found = said_.find("text");
    return found == said_.end() ? std::string() : *found->second.as<std::string>();
}

double SinkProgram::scrolled(std::string_view direction) {
    listen();
    auto const found = said_.find(direction);
    if (found == said_.end()) return 0;
    auto const* const whole = found->second.as<std::int64_t>();
    return whole ? static_cast<double>(*whole) : *found->second.as<double>();
}

void SinkProgram::listen() {
    char bytes[65536];
    for (ssize_t got = 0; (got = read(output_.get(), bytes, sizeof bytes)) > 0;)
        unread_.append(bytes, static_cast<std::size_t>(got));
    for (auto end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
        auto const line = JSONValue::parse(unread_.substr(0, end));
        unread_.erase(0, end + 1);
        for (auto const& [what, value] : *line.as<JSONValue::Object>()) said_.insert_or_assign(what, value);
    }
}

std::string textToType(std::size_t characters) {
    std::string const words =
        "The quick brown fox jumps over the lazy dog; 0123456789 (a+b)*c/d = [x] {y} <z> \"q\" 'r' "
        "~!@#$%^&_|\\?`.,:-\n";
    std::string const lacking[] = {"é", "ü", "ß", "ł", "П", "р", "и", "日", "本", "中", "文", "😀", "€", "½", "→"};
    std::string result;
    for (std::size_t i = 0; i < characters; ++i) {
        if (i % 29 == 28)
            result += lacking[i / 29 % std::size(lacking)];
        else
            result += words[i % words.size()];
    }
    return result;
}

}
