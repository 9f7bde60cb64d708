#include <TavaroPlatform/Processes/Private/ProgramStart.h>

#include <algorithm>
#include <csignal>
#include <string_view>
#include <unistd.h>

namespace tavaro {

ProgramStart::ProgramStart(Group group) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    sigset_t signals;
    sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    int const grouping = group == Group::session ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
    ::posix_spawnattr_setflags(&attributes_,
                               static_cast<short>(grouping | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK));
}

ProgramStart::~ProgramStart() {
    ::posix_spawnattr_destroy(&attributes_);
    ::posix_spawn_file_actions_destroy(&actions_);
}

void ProgramStart::openNothing(int as, int flags) {
    ::posix_spawn_file_actions_addopen(&actions_, as, "/dev/null", flags, 0);
}

void ProgramStart::takeOver(int descriptor, int as) { ::posix_spawn_file_actions_adddup2(&actions_, descriptor, as); }

void ProgramStart::enter(char const* folder) { ::posix_spawn_file_actions_addchdir_np(&actions_, folder); }

std::optional<pid_t> ProgramStart::start(std::vector<std::string> const& command, char* const* environment) const {
    if (command.empty()) return std::nullopt;
    auto const words = pointersTo(command);
    pid_t process = 0;
    int const failure = ::posix_spawn(&process, words[0], &actions_, &attributes_, words.data(), environment);
    return failure == 0 ? std::optional(process) : std::nullopt;
}

std::vector<char*> pointersTo(std::vector<std::string> const& texts) {
    std::vector<char*> pointers;
    for (auto const& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

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

}
