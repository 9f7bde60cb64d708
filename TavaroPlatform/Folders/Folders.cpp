#include <TavaroPlatform/Folders/Folders.h>

#include <TavaroCore/Files/AtomicFile.h>

#include <cstdlib>
#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

namespace tavaro::folders {

namespace {

std::filesystem::path home() {
    if (char const* set = std::getenv("HOME"); set && *set) return set;
    // Services start without HOME; the account's own entry still knows it.
    if (passwd const* account = getpwuid(getuid()); account && account->pw_dir && *account->pw_dir)
        return account->pw_dir;
    return std::filesystem::temp_directory_path();
}

/// What the variable names where that is an absolute path; others do not count.
std::filesystem::path baseFolder(char const* variable, char const* usual) {
    if (char const* set = std::getenv(variable); set && std::filesystem::path(set).is_absolute()) return set;
    return home() / usual;
}

}

std::filesystem::path applicationSupport() { return baseFolder("XDG_DATA_HOME", ".local/share"); }

std::filesystem::path configuration() { return baseFolder("XDG_CONFIG_HOME", ".config") / "Tavaro"; }

std::filesystem::path state() { return baseFolder("XDG_STATE_HOME", ".local/state") / "Tavaro"; }

std::filesystem::path movies() { return home() / "Movies"; }

std::filesystem::path recordings() { return applicationSupport() / "Tavaro/Recordings"; }

std::filesystem::path unsavedProjects() { return applicationSupport() / "Tavaro/Unsaved"; }

std::filesystem::path ensureUnsavedProjects() {
    auto const folder = unsavedProjects();
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    if (code) {
        throw FileError(FileError::Kind::cannotWrite,
                        fmt::format("Could not make the folder “{}”: {}.", folder.string(), code.message()));
    }
    return folder;
}

std::filesystem::path caches() { return baseFolder("XDG_CACHE_HOME", ".cache") / "Tavaro"; }

}
