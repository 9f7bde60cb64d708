#include <Tavaro/Model/Project/StoredProject.h>

#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSONError.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

[[noreturn]] void failOpening(ProjectPackage const& package, std::string_view reason) {
    throw FileError(FileError::Kind::cannotRead,
                    fmt::format("Could not open the project “{}”: {}.", package.url().string(), reason));
}

}

StoredProject openProject(std::filesystem::path const& given) {
    ProjectPackage const package(packagePath(given));
    return {package, loadDocument(package)};
}

DemoProject loadDocument(ProjectPackage const& package) {
    std::error_code ignored;
    if (!std::filesystem::exists(package.url(), ignored)) failOpening(package, "there is no such project");
    try {
        return package.load();
    } catch (JSONError const& error) {
        failOpening(package, error.what());
    }
}

FolderLock lockForEditing(std::filesystem::path const& given) {
    ProjectPackage const package(packagePath(given));
    auto lock = package.lockForEditing();
    package.removeTypedText();
    return lock;
}

}
