#pragma once

#include <TavaroCapture/Segments/Private/TakeManifest.h>

#include <cstdint>
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

private:
    void sync(std::filesystem::path const& file);

    std::shared_ptr<TakeManifest const> const manifest_;
    std::map<std::filesystem::path, std::uintmax_t> synced_; // bytes on the disk
    bool hasFailed_ = false;
};

}
