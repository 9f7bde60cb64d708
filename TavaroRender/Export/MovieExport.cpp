#include <TavaroRender/Export/MovieExport.h>

#include <array>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroRender/Export/ExportChecks.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/ExportJob.h>
#include <TavaroRender/Export/VideoPass.h>

namespace tavaro {

namespace {

MovieWriterSettings writerSettings(ExportSettings const& settings, ExporterOptions const& options) {
    static constexpr std::array codecs{MovieCodec::h264, MovieCodec::hevc, MovieCodec::proRes422};
    return {
        .container = settings.container == ExportContainer::mov ? MovieContainer::mov : MovieContainer::mp4,
        .codec = codecs[static_cast<std::size_t>(settings.codec)],
        .width = static_cast<int>(settings.size.width),
        .height = static_cast<int>(settings.size.height),
        .fps = static_cast<int>(settings.fps),
        .bitrate = settings.bitrate(),
        .keyFrameInterval = static_cast<int>(2 * settings.fps),
        .threads = options.encoderThreads,
        .encoder = options.encoder,
    };
}

MovieWriter makeWriter(ExportJob const& job, std::filesystem::path const& file) {
    try {
        return MovieWriter(file, writerSettings(job.settings, job.options));
    } catch (MediaError const& error) {
        bool const isRefused = error.kind() == MediaError::Kind::refused;
        throw ExportError::writerFailed(isRefused ? "video input rejected" : error.detail());
    }
}

void finish(ExportJob const& job, MovieWriter& writer) {
    try {
        writer.finish(static_cast<double>(job.totalFrames()) / static_cast<double>(job.settings.fps));
    } catch (MediaError const& error) {
        throw ExportError::writerFailed(error.detail());
    }
}

}

std::filesystem::path writeMovie(ExportJob& job, std::filesystem::path const& wanted,
                                 Exporter::Progress const& progress) {
    requireMovie(job.settings);
    requireSource(job.composer.project(), job.composer.duration());
    auto const total = job.totalFrames();
    auto const report = [&](ExportStage stage, std::int64_t framesWritten) {
        if (progress) progress({framesWritten, total, stage});
    };
    report(ExportStage::preparing, 0);
    job.openMedia();
    job.prepareDrawing();
    makeFolder(wanted.parent_path());
    auto const file = unusedFile(wanted);
    auto writer = makeWriter(job, file);
    runVideoPass({.composer = job.composer,
                  .sources = job.sources,
                  .renderer = job.renderer,
                  .sink = writer,
                  .rate = static_cast<double>(job.settings.fps),
                  .totalFrames = total,
                  .isCancelled = job.isCancelled},
                 progress);
    report(ExportStage::finishing, total);
    finish(job, writer);
    return file;
}

}
