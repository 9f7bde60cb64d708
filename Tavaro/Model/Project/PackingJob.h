#pragma once

#include <Tavaro/Model/Jobs/Job.h>

#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <filesystem>

namespace tavaro {

/// `archiveProject` as a job; what of the package is not in it comes as remarks too.
Job<PackedProject, ArchiveProgress> packingJob(MainQueue& queue, std::filesystem::path package, PackingRequest request);

/// `unpackProject` as a job.
Job<UnpackedProject, ArchiveProgress> unpackingJob(MainQueue& queue, std::filesystem::path archive,
                                                   std::filesystem::path folder);

}
