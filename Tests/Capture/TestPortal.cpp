#include "TestPortal.h"

#include "TestDisplay.h"

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Wayland/Private/ScreenCastPortal.h>

#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>

namespace tavaro {

namespace {

constexpr char const* portalProgram = "/usr/libexec/xdg-desktop-portal";
constexpr char const* storeProgram = "/usr/libexec/xdg-permission-store";
constexpr char const* backendEntry = "[portal]\nDBusName=org.freedesktop.impl.portal.desktop.tavaro\n"
                                     "Interfaces=org.freedesktop.impl.portal.ScreenCast;\nUseIn=tavaro;\n";

bool answers() {
    try {
        wayland::ScreenCastPortal const portal;
        return portal.abilities().version > 0;
    } catch (CaptureError const&) {
        return false;
    }
}

}

bool TestPortal::isInstalled() {
    return TestSession::isInstalled() && std::filesystem::exists(portalProgram) &&
           std::system("/usr/bin/python3 -c 'from gi.repository import Gio' >/dev/null 2>&1") == 0;
}

TestPortal::TestPortal(Answers const& given)
    : folder_("XDG_DESKTOP_PORTAL_DIR", session_.folder().string())
    , answers_(given) {
    auto const& folder = session_.folder();
    std::ofstream(folder / "tavaro.portal") << backendEntry;
    showScreen();
    store_.emplace(std::vector<std::string>{storeProgram});
    backend_.emplace(std::vector<std::string>{"/usr/bin/python3", TAVARO_TESTS "/Capture/portal-backend.py",
                                              (folder / "answers.json").string()},
                     folder / "backend.log");
    // It looks for the backend when it starts, and once.
    if (!eventually([&] { return std::filesystem::exists(folder / "answers.json.ready"); }))
        throw std::runtime_error("the portal's backend did not start");
    portal_.emplace(std::vector<std::string>{portalProgram}, folder / "portal.log");
    if (!eventually(answers)) throw std::runtime_error("xdg-desktop-portal did not start");
}

void TestPortal::showScreen(int width, int height, int silentBeginnings) {
    screen_.emplace(width, height, silentBeginnings);
    screen_->show(40);
    answer(answers_);
}

void TestPortal::answer(Answers const& given) {
    answers_ = given;
    auto const file = session_.folder() / "answers.json";
    std::ofstream(session_.folder() / "answers.new") << fmt::format(
        R"({{"node":{},"answer":{},"kind":{},"kinds":{},"pointers":{},"closes":{},"restore":"chosen"}})",
        screen_ ? screen_->id() : 0, given.answer, given.kind, given.kinds, given.pointers, given.closes);
    std::filesystem::rename(session_.folder() / "answers.new", file);
}

std::vector<std::string> TestPortal::questions() const {
    std::ifstream log(session_.folder() / "answers.json.log");
    std::vector<std::string> result;
    for (std::string line; std::getline(log, line);) result.push_back(line);
    return result;
}

}
