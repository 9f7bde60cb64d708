#include <Tavaro/Model/Project/PackingJob.h>

#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Package/ProjectPackage.h>

#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

auto reportingTo(JobReporter<ArchiveProgress>& reporter) {
    return [&reporter](ArchiveProgress const& progress) {
        reporter.progress(progress);
        return !reporter.isCancelled();
    };
}

}

Job<PackedProject, ArchiveProgress> packingJob(MainQueue& queue, fs::path package, PackingRequest request) {
    return {queue, "com.tavaro.job.pack",
            [package = std::move(package), request = std::move(request)](JobReporter<ArchiveProgress>& reporter) {
                auto made = archiveProject(ProjectPackage(packagePath(package)), request, reportingTo(reporter));
                for (auto const& remark : made.remarks) reporter.remark(remark);
                return made;
            }};
}

Job<UnpackedProject, ArchiveProgress> unpackingJob(MainQueue& queue, fs::path archive, fs::path folder) {
    return {queue, "com.tavaro.job.unpack",
            [archive = std::move(archive), folder = std::move(folder)](JobReporter<ArchiveProgress>& reporter) {
                return unpackProject(archive, folder, reportingTo(reporter));
            }};
}

}
