#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace {

/// What a child starts with: nothing of this program's streams, folder, signals or terminal.
class Surroundings {
public:
    Surroundings() {
        ::posix_spawn_file_actions_init(&files_);
        ::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&files_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&files_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addchdir_np(&files_, "/"); // the folder here may be removed under it
        ::posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    ~Surroundings() {
        ::posix_spawnattr_destroy(&attributes_);
        ::posix_spawn_file_actions_destroy(&files_);
    }
    Surroundings(Surroundings const&) = delete;
    Surroundings& operator=(Surroundings const&) = delete;

    posix_spawn_file_actions_t const* files() const { return &files_; }
    posix_spawnattr_t const* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t files_{};
    posix_spawnattr_t attributes_{};
};

/// As the system wants lists of texts, which it does not change.
std::vector<char*> pointersTo(std::vector<std::string> const& texts) {
    std::vector<char*> pointers;
    for (auto const& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// Of a name that is there twice the first counts, so what is here already is left out.
std::vector<char*> environmentWith(std::vector<std::string> const& more) {
    auto variables = pointersTo(more);
    variables.pop_back();
    auto const isReplaced = [&](std::string_view variable) {
        auto const name = variable.substr(0, variable.find('=') + 1);
        return std::ranges::any_of(more, [&](auto const& each) { return each.starts_with(name); });
    };
    for (char** each = environ; *each; ++each)
        if (!isReplaced(*each)) variables.push_back(*each);
    variables.push_back(nullptr);
    return variables;
}

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

std::optional<DetachedProcess> DetachedProcess::start(std::vector<std::string> const& command,
                                                      std::vector<std::string> const& more) {
    if (command.empty()) return std::nullopt;
    auto words = pointersTo(command);
    auto variables = environmentWith(more);
    Surroundings const around;
    pid_t process = 0;
    if (::posix_spawn(&process, words[0], around.files(), around.attributes(), words.data(), variables.data()) != 0)
        return std::nullopt;
    return DetachedProcess(process);
}

bool DetachedProcess::hasFailed() {
    int status = 0;
    if (!status_ && ::waitpid(process_, &status, WNOHANG) == process_) status_ = status;
    return status_ && *status_ != 0;
}

}
