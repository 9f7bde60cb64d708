#pragma once

#include <filesystem>

/// Where the system keeps things for the user. Nothing here creates a folder.
namespace tavaro::folders {

/// `$XDG_DATA_HOME` where it is an absolute path, else `~/.local/share`.
std::filesystem::path applicationSupport();

/// `~/Movies`.
std::filesystem::path movies();

/// Working folders of takes: `Tavaro/Recordings` in the application-support folder.
std::filesystem::path recordings();

}
