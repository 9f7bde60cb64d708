#include <TavaroAutomation/Applications/Private/ProgramFile.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

bool isProgramFile(std::string_view name) { return name.find('/') != std::string_view::npos; }

bool runsFile(pid_t process, fs::path const& file) {
    auto const folder = fs::path("/proc") / std::to_string(process);
    std::error_code code;
    if (fs::equivalent(folder / "exe", file, code)) return true;
    std::ifstream words(folder / "cmdline", std::ios::binary);
    std::string word;
    for (int i = 0; i < 2 && std::getline(words, word, '\0'); ++i) {
        if (word == file || (fs::path(word).is_absolute() && fs::equivalent(word, file, code))) return true;
    }
    return false;
}

bool isSessionAlive(pid_t session) {
    std::error_code code;
    return std::ranges::any_of(fs::directory_iterator("/proc", code), [session](fs::directory_entry const& each) {
        auto const name = each.path().filename().string();
        pid_t process = 0;
        auto const read = std::from_chars(name.data(), name.data() + name.size(), process);
        return read.ptr == name.data() + name.size() && process > 0 && ::getsid(process) == session;
    });
}

}
