#pragma once

#include <optional>
#include <spawn.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tavaro {

/// How a program is started: with the usual handling of signals, and with what is done on the way, in that order.
class ProgramStart {
public:
    enum class Group { ofItsOwn, session }; // signals of the terminal reach neither; a session has no terminal at all

    explicit ProgramStart(Group group);
    ~ProgramStart();
    ProgramStart(ProgramStart const&) = delete;
    ProgramStart& operator=(ProgramStart const&) = delete;

    void openNothing(int as, int flags);
    void takeOver(int descriptor, int as);
    void enter(char const* folder);

    /// The first word is the program's file. None where it cannot be started.
    std::optional<pid_t> start(std::vector<std::string> const& command, char* const* environment) const;

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

/// As the system wants lists of texts, which it does not change.
std::vector<char*> pointersTo(std::vector<std::string> const& texts);

/// This program's variables, and `more` ("NAME=value") before them: of a name that is there twice the first counts, so
/// what is here already is left out. Good as long as `more` is.
std::vector<char*> environmentWith(std::vector<std::string> const& more);

}
