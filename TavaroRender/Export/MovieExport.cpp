#include <TavaroRender/Export/Private/MovieExport.h>

#include <array>
#include <cmath>
#include <optional>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroRender/Audio/Private/AudioEnhancer.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Private/AudioPass.h>
#include <TavaroRender/Export/Private/ExportChecks.h>
#include <TavaroRender/Export/Private/ExportJob.h>
#include <TavaroRender/Export/Private/SoundMovie.h>
#include <TavaroRender/Export/Private/VideoPass.h>
#include <TavaroRender/Painter/Private/PaintChecks.h>

namespace tavaro {

namespace {

MovieWriterSettings writerSettings(ExportSettings const& settings, ExporterOptions const& options, MovieSound sound) {
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
        .sound = sound,
    };
}

/// A master copy loses nothing of its sound either.
MovieSound soundFor(ExportSettings const& settings) {
    return settings.codec == VideoCodecChoice::proRes422 ? MovieSound::pcm : MovieSound::aac;
}

MovieWriter makeWriter(ExportJob const& job, std::filesystem::path const& file, MovieSound sound) {
    try {
        return MovieWriter(file, writerSettings(job.settings, job.options, sound));
    } catch (MediaError const& error) {
        bool const isRefused = error.kind() == MediaError::Kind::refused;
        throw ExportError::writerFailed(isRefused ? "video input rejected" : error.detail());
    }
}

std::optional<MixRenderer> makeMix(ExportJob const& job, Exporter::Progress const& progress) {
    if (!job.settings.includesAudio) return std::nullopt;
    constexpr std::uintmax_t largestCache = std::uintmax_t{4} << 30;
    auto const& chosen = job.options.soundCache;
    AudioEnhancer const enhancer(chosen.empty() ? AudioEnhancer::defaultFolder() : chosen);
    auto const total = job.totalFrames();
    auto mix = prepareMix(job.painter.project(), job.package, enhancer, job.isCancelled, [&](double done) {
        if (progress) progress({0, total, ExportStage::enhancing, done});
    });
    enhancer.prune(largestCache);
    return mix;
}

SoundMovie::Part soundPart(ExportJob const& job) {
    auto const frames = static_cast<double>(job.totalFrames());
    return {.start = std::llround(job.part.start * audioRate),
            .count = std::llround(frames * audioRate / static_cast<double>(job.settings.fps))};
}

/// Where the movie lies then: the name may have been taken since the export began.
std::filesystem::path finish(ExportJob const& job, MovieWriter& writer, SoundMovie* sound,
                             std::filesystem::path const& wanted) {
    try {
        if (sound) sound->finishSound();
        auto const end = static_cast<double>(job.totalFrames()) / static_cast<double>(job.settings.fps);
        return writer.finishUnderUnusedName(wanted, end);
    } catch (MediaError const& error) {
        throw ExportError::writerFailed(error.detail());
    }
}

}

std::filesystem::path writeMovie(ExportJob& job, std::filesystem::path const& wanted,
                                 Exporter::Progress const& progress) {
    requireMovie(job.settings);
    requireSource(job.painter.project(), job.painter.duration());
    auto const total = job.totalFrames();
    auto const report = [&](ExportStage stage, std::int64_t framesWritten) {
        if (progress) progress({framesWritten, total, stage});
    };
    report(ExportStage::preparing, 0);
    job.painter.open();
    auto mix = makeMix(job, progress);
    makeFolder(wanted.parent_path());
    auto const file = unusedFile(wanted);
    auto writer = makeWriter(job, file, mix ? soundFor(job.settings) : MovieSound::none);
    std::optional<SoundMovie> sound;
    if (mix) sound.emplace(writer, *mix, soundPart(job));
    runVideoPass({.painter = job.painter,
                  .sink = sound ? static_cast<PictureSink&>(*sound) : writer,
                  .rate = static_cast<double>(job.settings.fps),
                  .start = job.part.start,
                  .totalFrames = total,
                  .isCancelled = job.isCancelled},
                 progress);
    report(ExportStage::finishing, total);
    return finish(job, writer, sound ? &*sound : nullptr, wanted);
}

}
