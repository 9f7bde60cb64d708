#include "TestMutter.h"

#include "TestDisplay.h"

#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>

namespace tavaro {

bool TestMutter::isInstalled() {
    return TestPortal::isInstalled() && std::system("command -v mutter >/dev/null 2>&1") == 0;
}

TestMutter::TestMutter(int width, int height) {
    compositor_.emplace(std::vector<std::string>{"mutter", "--headless", "--wayland", "--no-x11", "--virtual-monitor",
                                                 fmt::format("{}x{}", width, height)},
                        session_.folder() / "mutter.log");
    if (!eventually([] { return TestPortalProgram::isOnBus("org.gnome.Mutter.ScreenCast"); }))
        throw std::runtime_error("mutter did not start");
    share(1);
    part_.emplace(
        std::vector<std::string>{"/usr/bin/python3", TAVARO_TESTS "/Capture/portal-backend.py", answers(), "mutter"},
        session_.folder() / "part.log");
    portal_.emplace(session_.folder(), "tavaro", "org.freedesktop.impl.portal.desktop.tavaro");
}

void TestMutter::share(int kind) {
    std::ofstream(answers().string() + ".new")
        << fmt::format(R"({{"node":0,"answer":0,"kind":{},"kinds":3,"pointers":7,"restore":"chosen"}})", kind);
    std::filesystem::rename(answers().string() + ".new", answers());
}

void TestMutter::movePointer(PixelPoint point) const {
    auto const file = answers().string() + ".pointer";
    std::ofstream(file + ".new") << point.x << ' ' << point.y;
    std::filesystem::rename(file + ".new", file);
}

void TestMutter::showWindow(int width, int height, std::string const& colour) {
    auto const script = fmt::format("import gi; gi.require_version('Gdk', '3.0'); gi.require_version('Gtk', '3.0')\n"
                                    "from gi.repository import Gdk, Gtk\n"
                                    "window = Gtk.Window(decorated=False, title='A window')\n"
                                    "colour = Gdk.RGBA(); colour.parse('{}')\n"
                                    "window.override_background_color(Gtk.StateFlags.NORMAL, colour)\n"
                                    "window.set_default_size({}, {})\n"
                                    "window.show_all()\n"
                                    "Gtk.main()\n",
                                    colour, width, height);
    window_.emplace(
        std::vector<std::string>{"env", "GDK_BACKEND=wayland", "NO_AT_BRIDGE=1", "/usr/bin/python3", "-c", script},
        session_.folder() / "window.log");
}

}
