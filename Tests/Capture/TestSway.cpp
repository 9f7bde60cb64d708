#include "TestSway.h"

#include "TestDisplay.h"

#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <pwd.h>
#include <stdexcept>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr char const* partProgram = "/usr/libexec/xdg-desktop-portal-wlr";

/// sway refuses to run as root.
std::vector<std::string> asSomebody() {
    if (getuid() != 0) return {};
    return {"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", "--pdeathsig=KILL"};
}

/// A folder of the one that the compositor runs as.
std::filesystem::path madeRuntimeFolder(std::filesystem::path const& folder) {
    auto const result = folder / "sway";
    std::filesystem::create_directory(result);
    std::filesystem::permissions(result, std::filesystem::perms::owner_all);
    if (getuid() != 0) return result;
    auto const* const nobody = getpwnam("nobody");
    if (!nobody || chown(result.c_str(), nobody->pw_uid, nobody->pw_gid) != 0)
        throw std::runtime_error("sway gets no folder");
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all | std::filesystem::perms::others_exec);
    return result;
}

}

bool TestSway::isInstalled() {
    return TestPortalProgram::isInstalled() && std::filesystem::exists(partProgram) &&
           std::system("command -v sway swaynag swaymsg setpriv >/dev/null 2>&1") == 0;
}

TestSway::TestSway(int width, int height)
    : runtime_(madeRuntimeFolder(session_.folder()))
    , display_("WAYLAND_DISPLAY", (runtime_ / "wayland-1").string()) {
    startCompositor(width, height);
    auto const settings = session_.folder() / "xdg-desktop-portal-wlr";
    std::filesystem::create_directory(settings);
    std::ofstream(settings / "config") << "[screencast]\nchooser_type=none\n";
    part_.emplace(std::vector<std::string>{"env", "LD_PRELOAD=" TAVARO_CAST_WITHOUT_GPU, partProgram},
                  session_.folder() / "part.log");
    portal_.emplace(session_.folder(), "sway", "org.freedesktop.impl.portal.desktop.wlr");
}

void TestSway::startCompositor(int width, int height) {
    auto const settings = session_.folder() / "sway.conf";
    std::ofstream(settings) << fmt::format("output * mode {}x{}@60Hz\nxwayland disable\n", width, height);
    auto command = asSomebody();
    for (auto const& word :
         {std::string("env"), "XDG_RUNTIME_DIR=" + runtime_.string(), "HOME=" + runtime_.string(),
          std::string("WLR_BACKENDS=headless"), std::string("WLR_RENDERER=pixman"),
          std::string("WLR_LIBINPUT_NO_DEVICES=1"), std::string("sway"), std::string("-c"), settings.string()})
        command.push_back(word);
    std::filesystem::permissions(settings, std::filesystem::perms::others_read, std::filesystem::perm_options::add);
    compositor_.emplace(command, session_.folder() / "sway.log");
    if (!eventually([&] { return std::filesystem::exists(runtime_ / "wayland-1"); }))
        throw std::runtime_error("sway did not start");
}

void TestSway::order(std::string const& command) const {
    if (!obeys(command)) throw std::runtime_error("sway does not do: " + command);
}

bool TestSway::obeys(std::string const& command) const {
    std::string socket;
    for (auto const& file : std::filesystem::directory_iterator(runtime_))
        if (file.path().filename().string().starts_with("sway-ipc.")) socket = file.path();
    return std::system(fmt::format("swaymsg -q -s {} '{}' 2>/dev/null", socket, command).c_str()) == 0;
}

void TestSway::showBar(std::string const& colour) {
    bar_.emplace(std::vector<std::string>{"swaynag", "-m", " ", "--background", colour, "--button-background", colour,
                                          "--border-bottom", colour, "--border", colour, "--button-text", colour},
                 session_.folder() / "bar.log");
}

}
