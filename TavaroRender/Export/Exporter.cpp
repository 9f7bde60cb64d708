#include <TavaroRender/Export/Exporter.h>

#include <array>
#include <atomic>
#include <new>

#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Private/ExportJob.h>
#include <TavaroRender/Export/Private/GIFExport.h>
#include <TavaroRender/Export/Private/MovieExport.h>
#include <TavaroRender/Painter/PaintError.h>

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

/// A frame that cannot be drawn ends its export, and one as large as the settings ask for may not fit into the machine.
template<class Work> auto inExportTerms(Work const& work) {
    try {
        return work();
    } catch (PaintError const& error) {
        throw ExportError::of(error);
    } catch (std::bad_alloc const&) {
        throw ExportError::writerFailed("there is not enough memory for frames of this size");
    }
}

/// Runs the work of an export on the queue of its video pass, when no other export runs.
template<class Work> std::filesystem::path inTurn(Work const& work) {
    ExportTurn const turn;
    SerialQueue queue("com.tavaro.export.video");
    std::filesystem::path written;
    queue.sync([&] { written = inExportTerms(work); });
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

double Exporter::duration() const { return state_->job.part.duration; }

std::int64_t Exporter::totalFrames() const { return state_->job.totalFrames(); }

void Exporter::cancel() { state_->job.isCancelled = true; }

}
