#include <TavaroCapture/Recorder/Private/RecordingsFolder.h>

#include <TavaroCapture/Recorder/Private/DiskRoom.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(std::string const& reason) {
    throw CaptureError(CaptureError::Kind::writeFailed, fmt::format("Could not write the recording: {}.", reason));
}

}

fs::path recordingsFolderFor(fs::path const& given) {
    auto const folder = fs::absolute(given.empty() ? folders::recordings() : given);
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) fail(fmt::format("“{}” cannot be made ({})", folder.string(), systemReason(error.value())));
    auto const disk = fs::space(folder, error);
    DiskRoom room;
    if (!error) room.note({0, 0, disk.available, disk.capacity});
    if (room.isUsedUp()) fail(fmt::format("the disk of “{}” is full", folder.string()));
    return folder;
}

}
