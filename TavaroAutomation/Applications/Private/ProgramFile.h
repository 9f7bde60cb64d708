#pragma once

#include <filesystem>
#include <string_view>

#include <sys/types.h>

namespace tavaro {

/// Whether an application is named by the file of its program, "/opt/app/run", rather than as the desktop names it.
bool isProgramFile(std::string_view name);
/// Whether a process runs that file: as its program, or as the script that its program runs.
bool runsFile(pid_t process, std::filesystem::path const& file);
/// Whether any process is left of those that one started which has a session of its own.
bool isSessionAlive(pid_t session);

}
