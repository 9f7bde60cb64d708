#include <Tavaro/Model/Exporting/PreparedExport.h>

#include <Tavaro/Model/Making/Private/CutShort.h>

#include <TavaroCore/Export/ExportFile.h>

namespace tavaro {

namespace {

ExportSettings evened(ExportSettings settings) {
    settings.size = settings.size.evened();
    return settings;
}

std::optional<Size2> oddSizeOf(ExportSettings const& settings) {
    return settings.size == settings.size.evened() ? std::nullopt : std::optional(settings.size);
}

}

PreparedExport::PreparedExport(ProjectPackage package, DemoProject const& project, ExportChoices const& choices,
                               EncoderChoice encoder)
    : package_(std::move(package))
    , project_(project)
    , oddSize_(oddSizeOf(settingsFor(choices, project)))
    , settings_(evened(settingsFor(choices, project)))
    , target_(targetFor(choices, settings_, project))
    , exporter_(project_, package_, settings_, {.encoder = encoder, .range = choices.range}) {}

ExportedFilm PreparedExport::plan() const {
    bool const isGIF = settings_.container == ExportContainer::gif;
    return {.path = unusedFile(target_).string(),
            .container = settings_.container,
            .codec = isGIF ? std::nullopt : std::optional(settings_.codec),
            .width = settings_.size.width,
            .height = settings_.size.height,
            .fps = settings_.fps,
            .frames = exporter_.totalFrames(),
            .duration = exporter_.duration(),
            .estimatedBytes = estimatedFileSize(settings_, exporter_.duration())};
}

ExportedFilm PreparedExport::write(JobReporter<ExportProgress>& reporter) {
    for (auto const& sentence : cutShortMovies(package_, project_)) reporter.remark(sentence);
    auto film = plan();
    JobControl::CancelAction const cancelled(reporter, [&] { exporter_.cancel(); });
    auto const written =
        exporter_.exportFile(target_, [&](ExportProgress const& progress) { reporter.progress(progress); });
    film.path = written.string();
    film.bytes = static_cast<std::int64_t>(std::filesystem::file_size(written));
    return film;
}

Job<ExportedFilm, ExportProgress> exportJob(MainQueue& queue, std::shared_ptr<PreparedExport> prepared) {
    return {queue, "com.tavaro.job.export", [prepared = std::move(prepared)](JobReporter<ExportProgress>& reporter) {
                return prepared->write(reporter);
            }};
}

Job<ExportedFilm, ExportProgress> exportJob(MainQueue& queue, ExportRequest request) {
    return {
        queue, "com.tavaro.job.export", [request = std::move(request)](JobReporter<ExportProgress>& reporter) {
            return PreparedExport(request.package, request.project, request.choices, request.encoder).write(reporter);
        }};
}

}
