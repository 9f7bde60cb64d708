#include <TavaroCapture/Segments/Private/StreamSync.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <cerrno>
#include <spdlog/spdlog.h>
#include <system_error>
#include <utility>

namespace tavaro {

void StreamSync::sync() {
    for (auto const& open : manifest_->open()) {
        auto& files = growing_[open.role];
        follow(open, files);
        for (auto& file : files) sync(manifest_->segmentPath(open.role, file.index), file);
    }
}

/// The segment before the open one may still be on its way to being finished.
void StreamSync::follow(TakeManifest::OpenSegment const& open, Files& files) {
    if (files.empty()) files.push_back({});
    while (files.back().index < open.index) files.push_back({files.back().index + 1});
    while (files.size() > 2) {
        finished_ += files.front().synced;
        files.pop_front();
    }
}

void StreamSync::sync(std::filesystem::path const& path, Growing& file) {
    std::error_code missing;
    auto const size = std::filesystem::file_size(path, missing);
    if (missing || (file.hasName && file.synced == size)) return;
    // Any opening of a file syncs what all of them have written.
    auto const opened = FileDescriptor::open(path, FileDescriptor::Opening::reading);
    int const failure = opened.isOpen() ? opened.sync() : errno;
    if (failure != 0 && !std::exchange(hasFailed_, true))
        spdlog::warn("“{}” could not be brought to the disk: {}.", path.string(), systemReason(failure));
    if (!std::exchange(file.hasName, true)) FileDescriptor::syncFolderOf(path);
    file.synced = size;
}

std::uintmax_t StreamSync::written() const {
    auto result = finished_;
    for (auto const& [role, files] : growing_)
        for (auto const& file : files) result += file.synced;
    return result;
}

}
