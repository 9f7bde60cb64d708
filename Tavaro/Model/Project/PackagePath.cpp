#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

#include <cerrno>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

fs::path packagePath(fs::path const& given) {
    auto path = given;
    if (!path.has_filename()) path = path.parent_path(); // "take.recproj/"
    if (path.extension() != ProjectPackage::directoryExtension) path += ProjectPackage::directoryExtension;
    return path;
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
}

fs::path unsavedPackagePath(std::string_view name) {
    return unusedFile(folders::ensureUnsavedProjects() / fmt::format("{}{}", name, ProjectPackage::directoryExtension));
}

}
