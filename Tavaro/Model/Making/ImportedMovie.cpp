#include <Tavaro/Model/Making/ImportedMovie.h>

#include <Tavaro/Model/Making/NewProject.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr char const* cancelled = "The import was cancelled.";

RecordingMetadata readEvents(std::filesystem::path const& file) {
    auto const text = readWholeFile(file);
    if (!text) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not read the events “{}”: there is no such file.", file.string()));
    }
    try {
        return decodeJSON<RecordingMetadata>(*text);
    } catch (JSONError const& error) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not read the events “{}”: {}.", file.string(), error.what()));
    }
}

using Reporter = JobReporter<ImportProgress>;

/// With the movie in it, which may be large: whoever waits sees how far it is, and can end it.
DemoProject createImported(ProjectPackage const& package, ImportRequest const& request,
                           RecordingMetadata const& metadata, Reporter& control) {
    std::error_code ignored;
    auto const bytes = std::filesystem::file_size(request.movie, ignored);
    try {
        return createProject(package,
                             {.movie = request.movie,
                              .importMode = ImportMode::copy,
                              .metadata = metadata,
                              .logOrigin = LogOrigin::elsewhere,
                              .mode = request.mode,
                              .remark = [&](std::string const& remark) { control.remark(remark); },
                              .proceed =
                                  [&](std::uint64_t copied) {
                                      control.progress(
                                          {.stage = ImportStage::copying, .bytesDone = copied, .bytesTotal = bytes});
                                      return !control.isCancelled();
                                  },
                              .measured =
                                  [&](double done) {
                                      control.stopIfCancelled(cancelled);
                                      control.progress({.measured = done});
                                  }});
    } catch (FileError const&) {
        control.stopIfCancelled(cancelled);
        throw;
    }
}

MadeProject importMovie(ImportRequest const& request, Reporter& control) {
    expectPlaceFor(request.package);
    auto const metadata = request.events.empty() ? RecordingMetadata{} : readEvents(request.events);
    control.stopIfCancelled(cancelled);
    ProjectPackage const package(request.package);
    auto const project = createImported(package, request, metadata, control);
    if (control.isCancelled()) {
        std::error_code ignored;
        std::filesystem::remove_all(package.url(), ignored);
        throw JobCancelled(cancelled);
    }
    writeThumbnail(package, project);
    return {.path = request.package.string(),
            .duration = project.duration(),
            .sourceSize = project.sourceSize,
            .clicks = static_cast<std::int64_t>(metadata.clicks.size()),
            .keystrokes = static_cast<std::int64_t>(metadata.keystrokes.size())};
}

}

Job<MadeProject, ImportProgress> importJob(MainQueue& queue, ImportRequest request) {
    return {queue, "com.tavaro.job.import",
            [request = std::move(request)](Reporter& reporter) { return importMovie(request, reporter); }};
}

}
