#pragma once

#include <Tavaro/Model/Jobs/Job.h>

#include <cstdint>
#include <filesystem>

namespace tavaro {

struct CopyProgress {
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;
};

/// Makes a project of its own of a copy, with an id of its own and the name of its package, which is "NAME
/// copy.recproj" beside it or the first free one of "NAME copy 2", …. Gives where it is. The copy has no previous save.
/// Fails with `FileError`, and then, or when it is cancelled, leaves nothing.
Job<std::filesystem::path, CopyProgress> duplicationJob(MainQueue& queue, std::filesystem::path package);

}
