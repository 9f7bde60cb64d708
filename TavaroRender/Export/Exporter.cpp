#include <TavaroRender/Export/Exporter.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Private/ExportChecks.h>
#include <TavaroRender/Export/Private/ExportJob.h>
#include <TavaroRender/Export/Private/GIFExport.h>
#include <TavaroRender/Export/Private/MovieExport.h>

namespace tavaro {

namespace {

std::atomic<bool> isExporting{false};

/// Held by the one export of this process.
class ExportTurn {
public:
    ExportTurn() {
        if (isExporting.exchange(true)) throw ExportError::alreadyExporting();
    }
    ~ExportTurn() { isExporting = false; }
    ExportTurn(ExportTurn const&) = delete;
    ExportTurn& operator=(ExportTurn const&) = delete;
};

/// A frame as large as the settings ask for may not fit into the machine.
template<class Work> auto withMemory(Work const& work) {
    try {
        return work();
    } catch (std::bad_alloc const&) {
        throw ExportError::writerFailed("there is not enough memory for frames of this size");
    }
}

/// Runs the work of an export on the queue of its video pass, when no other export runs.
template<class Work> std::filesystem::path inTurn(Work const& work) {
    ExportTurn const turn;
    SerialQueue queue("com.tavaro.export.video");
    std::filesystem::path written;
    queue.sync([&] { written = withMemory(work); });
    return written;
}

}

std::string_view displayName(ExportStage stage) {
    static constexpr std::array<std::string_view, 4> names{"Preparing", "Enhancing sound", "Rendering", "Finishing"};
    return names[static_cast<std::size_t>(stage)];
}

struct Exporter::State {
    ExportJob job;
};

Exporter::Exporter(DemoProject const& project, ProjectPackage const& package, ExportSettings const& settings,
                   ExporterOptions const& options)
    : state_(new State{{project, package, settings, options}}) {}

Exporter::~Exporter() = default;

std::filesystem::path Exporter::exportMovie(std::filesystem::path const& file, Progress const& progress) {
    return inTurn([&] { return writeMovie(state_->job, file, progress); });
}

std::filesystem::path Exporter::exportGIF(std::filesystem::path const& file, Progress const& progress) {
    return inTurn([&] { return writeGIF(state_->job, file, progress); });
}

std::filesystem::path Exporter::exportFile(std::filesystem::path const& file, Progress const& progress) {
    bool const isGIF = state_->job.settings.container == ExportContainer::gif;
    return isGIF ? exportGIF(file, progress) : exportMovie(file, progress);
}

Image Exporter::renderStill(double at) {
    auto& job = state_->job;
    return withMemory([&] {
        requireDrawable(job.settings);
        requireSource(job.composer.project(), job.composer.duration());
        job.prepareDrawing();
        auto const canvas = job.frame(at);
        Image still(canvas.width, canvas.height);
        for (int y = 0; y < canvas.height; ++y) std::copy_n(canvas.row(y), 4 * std::size_t(canvas.width), still.row(y));
        return still;
    });
}

double Exporter::duration() const { return state_->job.composer.duration(); }

std::int64_t Exporter::totalFrames() const { return state_->job.totalFrames(); }

void Exporter::cancel() { state_->job.isCancelled = true; }

}
