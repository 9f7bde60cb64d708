#include <TavaroRender/Export/Private/GIFExport.h>

#include <algorithm>
#include <cmath>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/GIF/GIFWriter.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Private/ExportChecks.h>
#include <TavaroRender/Export/Private/ExportJob.h>
#include <TavaroRender/Export/Private/VideoPass.h>
#include <TavaroRender/Painter/Private/PaintChecks.h>

namespace tavaro {

namespace {

// Frames that the colours are found in: two a second, and of a film however short or long no fewer and no more than
// these. A colour on show for less than half a second is drawn in those that others have.
constexpr double samplesPerSecond = 2;
constexpr double fewestSamples = 24;
constexpr double mostSamples = 300;

/// Every failure of a destination is one of the GIF.
template<class Work> auto withGIFFailures(Work const& work) {
    try {
        return work();
    } catch (MediaError const& error) {
        throw ExportError::gifFailed(error.detail());
    } catch (ExportError const& error) {
        if (error.kind() != ExportError::Kind::writerFailed) throw;
        throw ExportError::gifFailed(error.detail());
    }
}

class GIFExport {
public:
    GIFExport(ExportJob& job, Exporter::Progress const& progress)
        : job_(job)
        , progress_(progress)
        , total_(job.totalFrames()) {}

    /// Returns where the GIF lies then: the name may have been taken since the export began.
    std::filesystem::path write(std::filesystem::path const& wanted) {
        GIFWriter writer(unusedFile(wanted), width(), height(), palette());
        auto const rate = static_cast<double>(job_.settings.fps);
        run(writer, rate, total_, progress_);
        report(ExportStage::finishing, total_);
        return writer.finishUnderUnusedName(wanted, static_cast<double>(total_) / rate);
    }

    void report(ExportStage stage, std::int64_t framesWritten) const {
        if (progress_) progress_({framesWritten, total_, stage});
    }

private:
    int width() const { return static_cast<int>(job_.settings.size.width); }
    int height() const { return static_cast<int>(job_.settings.size.height); }

    GIFPalette palette() {
        auto const seconds = static_cast<double>(total_) / static_cast<double>(job_.settings.fps);
        auto const wanted = std::clamp(std::ceil(seconds * samplesPerSecond), fewestSamples, mostSamples);
        auto const samples = std::min(static_cast<std::int64_t>(wanted), total_);
        GIFPaletteMaker maker(width(), height());
        run(maker, static_cast<double>(samples) / seconds, samples,
            [this](ExportProgress const&) { report(ExportStage::preparing, 0); });
        return maker.palette();
    }

    void run(PictureSink& sink, double rate, std::int64_t frames, Exporter::Progress const& progress) {
        runVideoPass({.painter = job_.painter,
                      .sink = sink,
                      .rate = rate,
                      .start = job_.part.start,
                      .totalFrames = frames,
                      .isCancelled = job_.isCancelled},
                     progress);
    }

    ExportJob& job_;
    Exporter::Progress const& progress_;
    std::int64_t const total_;
};

}

std::filesystem::path writeGIF(ExportJob& job, std::filesystem::path const& wanted,
                               Exporter::Progress const& progress) {
    requireGIF(job.settings);
    requireSource(job.painter.project(), job.painter.duration());
    GIFExport gif(job, progress);
    gif.report(ExportStage::preparing, 0);
    job.painter.open();
    makeFolder(wanted.parent_path());
    return withGIFFailures([&] { return gif.write(wanted); });
}

}
