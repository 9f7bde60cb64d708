#include <TavaroCapture/Segments/Private/StreamSync.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <cerrno>
#include <spdlog/spdlog.h>
#include <system_error>

namespace tavaro {

void StreamSync::sync() {
    for (auto const& stream : streamsOf(manifest_->record())) {
        auto const open = static_cast<std::int64_t>(stream.segments.size());
        // The one before may still be on its way to being finished.
        if (open > 0) sync(manifest_->segmentPath(stream.role, open - 1));
        sync(manifest_->segmentPath(stream.role, open));
        if (open > 1) synced_.erase(manifest_->segmentPath(stream.role, open - 2));
    }
}

void StreamSync::sync(std::filesystem::path const& file) {
    std::error_code missing;
    auto const size = std::filesystem::file_size(file, missing);
    auto const known = synced_.find(file);
    if (missing || (known != synced_.end() && known->second == size)) return;
    // Any opening of a file syncs what all of them have written.
    auto const opened = FileDescriptor::open(file, FileDescriptor::Opening::reading);
    int const failure = opened.isOpen() ? opened.sync() : errno;
    if (failure != 0 && !std::exchange(hasFailed_, true))
        spdlog::warn("“{}” could not be brought to the disk: {}.", file.string(), systemReason(failure));
    if (known == synced_.end()) FileDescriptor::syncFolderOf(file); // it has its name
    synced_[file] = size;
}

}
