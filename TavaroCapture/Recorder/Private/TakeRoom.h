#pragma once

#include <TavaroCapture/Recorder/Private/DiskRoom.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace tavaro {

/// How long a take can go on until one of the disks that it needs is too full to save it: that of its working folder,
/// and that of its project where it is another one. One thread, but for `seconds`.
class TakeRoom {
public:
    /// The project's folder may be made later; empty: on the same disk.
    TakeRoom(std::filesystem::path directory, std::filesystem::path const& projectFolder);

    /// Once a second or so, at that time of the take, of which so many bytes were written. False where the working
    /// folder is gone.
    bool look(double at, std::uintmax_t written);
    /// None before it can be told. Any thread.
    std::optional<double> seconds() const;
    /// A folder whose disk has no more room: the take has to end now.
    std::optional<std::filesystem::path> usedUp() const;

private:
    struct Disk {
        std::filesystem::path folder; // as the user knows it
        std::filesystem::path looked; // that or one above it: there now
        DiskRoom room;
    };

    std::filesystem::path const directory_;
    std::vector<Disk> disks_;
    std::atomic<double> seconds_ = -1; // below 0: not known yet
};

/// Throws `CaptureError` where the disk of that folder, which may be made later, has no room for a project.
void expectRoomFor(std::filesystem::path const& projectFolder);

}
