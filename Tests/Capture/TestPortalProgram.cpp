#include "TestPortalProgram.h"

#include "TestDisplay.h"

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Wayland/Private/ScreenCastPortal.h>

#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <systemd/sd-bus.h>

namespace tavaro {

namespace {

constexpr char const* portalProgram = "/usr/libexec/xdg-desktop-portal";
constexpr char const* storeProgram = "/usr/libexec/xdg-permission-store";

bool answers() {
    try {
        wayland::ScreenCastPortal const portal;
        return portal.abilities().version > 0;
    } catch (CaptureError const&) {
        return false;
    }
}

}

bool TestPortalProgram::isInstalled() { return TestSession::isInstalled() && std::filesystem::exists(portalProgram); }

bool TestPortalProgram::isOnBus(std::string const& name) {
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) return false;
    bool const isThere =
        sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner",
                           nullptr, nullptr, "s", name.c_str()) >= 0;
    sd_bus_flush_close_unref(bus);
    return isThere;
}

TestPortalProgram::TestPortalProgram(std::filesystem::path const& folder, std::string const& desktop,
                                     std::string const& name)
    : desktop_("XDG_CURRENT_DESKTOP", desktop)
    , parts_("XDG_DESKTOP_PORTAL_DIR", (folder / "parts").string()) {
    std::filesystem::create_directory(folder / "parts");
    std::ofstream(folder / "parts" / "test.portal") << fmt::format(
        "[portal]\nDBusName={}\nInterfaces=org.freedesktop.impl.portal.ScreenCast;\nUseIn={};\n", name, desktop);
    // It looks for the part when it starts, and once.
    if (!eventually([&] { return isOnBus(name); })) throw std::runtime_error("the portal's desktop did not start");
    store_.emplace(std::vector<std::string>{storeProgram});
    portal_.emplace(std::vector<std::string>{portalProgram}, folder / "portal.log");
    if (!eventually(answers)) throw std::runtime_error("xdg-desktop-portal did not start");
}

}
