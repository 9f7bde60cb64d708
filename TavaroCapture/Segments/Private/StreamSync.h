#pragma once

#include <TavaroCapture/Segments/Private/TakeManifest.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>

namespace tavaro {

/// Brings what the streams of a take have written so far to the disk, so that it outlives a machine that loses its
/// power. Closed segments get there as they are finished; this is for those that still grow. One thread, which waits
/// for the disk; the writers do not.
class StreamSync {
public:
    explicit StreamSync(std::shared_ptr<TakeManifest const> manifest) : manifest_(std::move(manifest)) {}

    void sync();
    /// Bytes in the files of the streams, as of the last `sync`.
    std::uintmax_t written() const;

private:
    /// A file that may still grow.
    struct Growing {
        std::int64_t index = 0;    // of its segment
        std::uintmax_t synced = 0; // bytes on the disk
        bool hasName = false;      // there
    };
    using Files = std::deque<Growing>;

    void follow(TakeManifest::OpenSegment const& open, Files& files);
    void sync(std::filesystem::path const& path, Growing& file);

    std::shared_ptr<TakeManifest const> const manifest_;
    std::map<StreamRole, Files> growing_;
    std::uintmax_t finished_ = 0; // bytes of the others
    bool hasFailed_ = false;
};

}
