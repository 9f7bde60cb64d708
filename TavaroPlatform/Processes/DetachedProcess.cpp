#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <TavaroPlatform/Processes/Private/ProgramStart.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr int unknown = -1; // no status of a process

bool isProgram(std::filesystem::path const& file) {
    std::error_code code;
    return std::filesystem::is_regular_file(file, code) && ::access(file.c_str(), X_OK) == 0;
}

}

std::optional<std::filesystem::path> findProgram(std::string_view name) {
    std::error_code code;
    auto const beside = std::filesystem::read_symlink("/proc/self/exe", code).parent_path() / name;
    if (!code && isProgram(beside)) return beside;
    char const* const set = std::getenv("PATH");
    std::string_view folders = set ? set : "";
    while (!folders.empty()) {
        auto const folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        if (auto file = std::filesystem::path(folder) / name; file.is_absolute() && isProgram(file)) return file;
    }
    return std::nullopt;
}

std::optional<std::filesystem::path> findHiddenProgram(std::string_view name) {
    if (auto found = findProgram(name)) return found;
    std::error_code code;
    auto const own = std::filesystem::read_symlink("/proc/self/exe", code).parent_path();
    auto installed = (own / "../libexec/tavaro" / name).lexically_normal();
    return !code && isProgram(installed) ? std::optional(installed) : std::nullopt;
}

std::optional<DetachedProcess> DetachedProcess::start(std::vector<std::string> const& command,
                                                      std::vector<std::string> const& more,
                                                      std::filesystem::path const& folder) {
    ProgramStart program(ProgramStart::Group::session);
    program.openNothing(STDIN_FILENO, O_RDONLY);
    program.openNothing(STDOUT_FILENO, O_WRONLY);
    program.openNothing(STDERR_FILENO, O_WRONLY);
    program.enter(folder.c_str());
    auto const process = program.start(command, environmentWith(more).data());
    return process ? std::optional(DetachedProcess(*process)) : std::nullopt;
}

bool DetachedProcess::hasEnded() {
    if (status_) return true;
    int status = 0;
    auto const process = ::waitpid(process_, &status, WNOHANG);
    if (process == process_) status_ = status;
    if (process < 0 && errno == ECHILD) status_ = unknown;
    return status_.has_value();
}

bool DetachedProcess::hasFailed() { return hasEnded() && *status_ != 0; }

}
