#pragma once

#include <Tavaro/Model/Jobs/Job.h>
#include <Tavaro/Model/Making/MadeProject.h>

#include <TavaroCore/Project/DemoMode.h>

#include <cstdint>
#include <filesystem>

namespace tavaro {

/// A movie that is to become a project.
struct ImportRequest {
    std::filesystem::path movie;
    std::filesystem::path events; // a log in JSON of what happened in it; empty: none
    std::filesystem::path package;
    DemoMode mode = DemoMode::website;
};

enum class ImportStage { measuring, copying };

struct ImportProgress {
    ImportStage stage = ImportStage::measuring;
    double measured = 0;         // of the sound, 0…1
    std::uint64_t bytesDone = 0; // of the movie's copy
    std::uint64_t bytesTotal = 0;
};

/// Makes the project, with its thumbnail; the movie is copied. What of it could not be brought in comes as remarks.
/// Fails with `FileError` and `MediaError`, and then, or when it is cancelled, leaves no package.
Job<MadeProject, ImportProgress> importJob(MainQueue& queue, ImportRequest request);

}
