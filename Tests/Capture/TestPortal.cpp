#include "TestPortal.h"

#include <cstdlib>
#include <fmt/format.h>
#include <fstream>

namespace tavaro {

bool TestPortal::isInstalled() {
    return TestPortalProgram::isInstalled() &&
           std::system("/usr/bin/python3 -c 'from gi.repository import Gio' >/dev/null 2>&1") == 0;
}

TestPortal::TestPortal(Answers const& given) : answers_(given) {
    auto const& folder = session_.folder();
    showScreen();
    backend_.emplace(std::vector<std::string>{"/usr/bin/python3", TAVARO_TESTS "/Capture/portal-backend.py",
                                              (folder / "answers.json").string()},
                     folder / "backend.log");
    portal_.emplace(folder, "tavaro", "org.freedesktop.impl.portal.desktop.tavaro");
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
