#include <Tavaro/Model/Privacy/DueScan.h>

#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

fs::path fileIn(fs::path const& folder) { return folder / "scan.due"; }

bool isLookedAt(DemoProject const& project) {
    return project.redactionScan && unscannedRanges(project, project.redactionSettings).empty();
}

}

void DueScan::note(fs::path const& folder) {
    auto const file = fileIn(folder);
    auto const made = FileDescriptor::open(file, FileDescriptor::Opening::lockFile);
    if (!made.isOpen()) throw FileError::writing(file, errno);
    if (int const failure = made.sync()) throw FileError::writing(file, failure);
}

bool DueScan::isNoted(fs::path const& folder) {
    std::error_code ignored;
    return fs::is_regular_file(fileIn(folder), ignored);
}

bool DueScan::isDue(ProjectPackage const& package, DemoProject const& project) {
    return isNoted(package.url()) && !isLookedAt(project);
}

void DueScan::forget(ProjectPackage const& package) {
    std::error_code ignored;
    fs::remove(fileIn(package.url()), ignored);
}

std::optional<DueScan> DueScan::claim(ProjectPackage const& package, DemoProject const& project) {
    if (!isNoted(package.url())) return std::nullopt;
    auto const file = fileIn(package.url());
    auto claimed = FileDescriptor::open(file, FileDescriptor::Opening::reading);
    if (!claimed.isOpen()) return std::nullopt;
    if (!claimed.tryLock(FileDescriptor::Sharing::exclusive) && errno == EWOULDBLOCK) return std::nullopt;
    DueScan due(file, std::move(claimed));
    if (!isLookedAt(project)) return due;
    due.settle();
    return std::nullopt;
}

void DueScan::settle() {
    std::error_code ignored;
    fs::remove(file_, ignored);
}

}
