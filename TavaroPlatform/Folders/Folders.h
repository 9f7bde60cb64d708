#pragma once

#include <filesystem>

/// Where the system keeps things for the user. Nothing here creates a folder, but what is called `ensure…`.
namespace tavaro::folders {

/// `$XDG_DATA_HOME` where it is an absolute path, else `~/.local/share`.
std::filesystem::path applicationSupport();

/// What the user chose: `Tavaro` in `$XDG_CONFIG_HOME` where that is an absolute path, else in `~/.config`.
std::filesystem::path configuration();

/// What programs remember of their doings: `Tavaro` in `$XDG_STATE_HOME` where that is an absolute path, else in
/// `~/.local/state`.
std::filesystem::path state();

/// `~/Movies`.
std::filesystem::path movies();

/// Working folders of takes: `Tavaro/Recordings` in the application-support folder.
std::filesystem::path recordings();

/// Where projects are kept until the user gives them a place: `Tavaro/Unsaved` in the application-support folder.
std::filesystem::path unsavedProjects();
/// The same, made when it is not there. Throws `FileError`.
std::filesystem::path ensureUnsavedProjects();

/// What can be found out again: `Tavaro` in `$XDG_CACHE_HOME` where that is an absolute path, else in `~/.cache`.
std::filesystem::path caches();

}
