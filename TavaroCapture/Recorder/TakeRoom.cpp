#include <TavaroCapture/Recorder/Private/TakeRoom.h>

#include <TavaroCapture/Sources/CaptureError.h>

#include <algorithm>
#include <fmt/format.h>
#include <sys/stat.h>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

fs::path nearestThere(fs::path folder) {
    std::error_code ignored;
    folder = fs::absolute(folder);
    while (folder.has_relative_path() && !fs::exists(folder, ignored)) folder = folder.parent_path();
    return folder;
}

bool areOnOneDisk(fs::path const& a, fs::path const& b) {
    struct stat first {
    }, second{};
    return ::stat(a.c_str(), &first) != 0 || ::stat(b.c_str(), &second) != 0 || first.st_dev == second.st_dev;
}

}

TakeRoom::TakeRoom(fs::path directory, fs::path const& projectFolder) : directory_(std::move(directory)) {
    disks_.push_back({directory_.parent_path(), directory_, DiskRoom(DiskRoom::Use::working)});
    if (projectFolder.empty()) return;
    auto there = nearestThere(projectFolder);
    if (!areOnOneDisk(there, directory_))
        disks_.push_back({fs::absolute(projectFolder), std::move(there), DiskRoom(DiskRoom::Use::keeping)});
}

bool TakeRoom::look(double at, std::uintmax_t written) {
    std::optional<double> least;
    for (auto& disk : disks_) {
        std::error_code error;
        auto const space = fs::space(disk.looked, error);
        if (error == std::errc::no_such_file_or_directory && disk.looked == directory_) return false;
        if (error) continue; // a disk that was taken out shows when the project is made
        disk.room.note({at, written, space.available, space.capacity});
        if (auto const seconds = disk.room.seconds()) least = std::min(*seconds, least.value_or(*seconds));
    }
    seconds_ = least.value_or(-1);
    return true;
}

std::optional<double> TakeRoom::seconds() const {
    double const seconds = seconds_;
    return seconds >= 0 ? std::optional(seconds) : std::nullopt;
}

std::optional<fs::path> TakeRoom::usedUp() const {
    auto const full = std::ranges::find_if(disks_, [](Disk const& disk) { return disk.room.isUsedUp(); });
    return full == disks_.end() ? std::nullopt : std::optional(full->folder);
}

void expectRoomFor(fs::path const& projectFolder) {
    if (projectFolder.empty()) return;
    std::error_code error;
    auto const space = fs::space(nearestThere(projectFolder), error);
    DiskRoom room(DiskRoom::Use::keeping);
    if (!error) room.note({0, 0, space.available, space.capacity});
    if (room.isUsedUp())
        throw CaptureError(CaptureError::Kind::writeFailed,
                           fmt::format("Could not write the recording: the disk of “{}” is full.",
                                       fs::absolute(projectFolder).string()));
}

}
