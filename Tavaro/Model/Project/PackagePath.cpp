#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

fs::path packagePath(fs::path const& given) {
    auto path = given;
    if (!path.has_filename()) path = path.parent_path(); // "take.recproj/"
    if (path.extension() != ProjectPackage::directoryExtension) path += ProjectPackage::directoryExtension;
    return path;
}

namespace {

/// Why the first of the folders that are to be made in that one cannot be. A name can be too long, and there are
/// folders that take none whatever their permissions say: known by trying, under a hidden name of the same length.
std::optional<std::string> refusal(fs::path const& folder, fs::path const& package) {
    auto const relative = fs::absolute(package).lexically_normal().lexically_relative(folder.lexically_normal());
    auto const isTooLong = [](fs::path const& name) { return name.native().size() > NAME_MAX; };
    if (std::ranges::any_of(relative, isTooLong)) return systemReason(ENAMETOOLONG);
    auto name = relative.begin()->native();
    name.front() = '.';
    auto const tried = folder / name;
    if (mkdir(tried.c_str(), S_IRWXU) != 0 && errno != EEXIST) return systemReason(errno);
    rmdir(tried.c_str()); // also one that a program left which was killed here
    return std::nullopt;
}

}

void expectPlaceFor(fs::path const& package) {
    auto const fail = [&](std::string const& reason) {
        throw FileError(FileError::Kind::cannotWrite,
                        fmt::format("Could not create the project “{}”: {}.", package.string(), reason));
    };
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(package, ignored))) fail("something with that name exists already");
    auto folder = fs::absolute(package).parent_path();
    while (folder.has_relative_path() && !fs::exists(folder, ignored)) folder = folder.parent_path();
    if (!fs::is_directory(folder, ignored)) fail(fmt::format("“{}” is not a folder", folder.string()));
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        fail(fmt::format("nothing can be written into “{}” ({})", folder.string(), systemReason(errno)));
    if (auto const reason = refusal(folder, package)) fail(*reason);
}

fs::path unsavedPackagePath(std::string_view name) {
    return unusedFile(folders::ensureUnsavedProjects() / fmt::format("{}{}", name, ProjectPackage::directoryExtension));
}

}
