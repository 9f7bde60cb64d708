#include <TavaroRender/Export/Exporter.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <new>
#include <optional>
#include <set>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroRender/Composition/FrameComposer.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/RecordingFrames.h>
#include <TavaroRender/Export/VideoPass.h>

namespace tavaro {

namespace {

constexpr std::int64_t smallestSide = 16;
constexpr std::int64_t largestSide = 16384;
constexpr std::int64_t largestRate = 240;
constexpr double longestMovie = 1e7; // seconds

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

DemoProject withSettings(DemoProject project, ExportSettings const& settings) {
    project.exportSettings = settings;
    project.exportSettings.size = settings.size.evened();
    return project;
}

MovieWriterSettings writerSettings(ExportSettings const& settings, int threads) {
    static constexpr std::array codecs{MovieCodec::h264, MovieCodec::hevc, MovieCodec::proRes422};
    return {
        .container = settings.container == ExportContainer::mov ? MovieContainer::mov : MovieContainer::mp4,
        .codec = codecs[static_cast<std::size_t>(settings.codec)],
        .width = static_cast<int>(settings.size.width),
        .height = static_cast<int>(settings.size.height),
        .fps = static_cast<int>(settings.fps),
        .bitrate = settings.bitrate(),
        .keyFrameInterval = static_cast<int>(2 * settings.fps),
        .threads = threads,
    };
}

void requireDrawable(ExportSettings const& settings) {
    auto const isSide = [](std::int64_t side) { return side >= smallestSide && side <= largestSide; };
    if (!isSide(settings.size.width) || !isSide(settings.size.height)) {
        throw ExportError::writerFailed("a movie is at least " + std::to_string(smallestSide) + " and at most " +
                                        std::to_string(largestSide) + " pixels wide and high, not " +
                                        std::to_string(settings.size.width) + " × " +
                                        std::to_string(settings.size.height));
    }
}

void requireWritable(ExportSettings const& settings) {
    requireDrawable(settings);
    if (settings.fps < 1 || settings.fps > largestRate) {
        throw ExportError::writerFailed("a movie has 1 to " + std::to_string(largestRate) + " frames a second, not " +
                                        std::to_string(settings.fps));
    }
    if (settings.container == ExportContainer::gif) {
        throw ExportError::writerFailed("GIF pictures cannot be written yet, choose MP4 or MOV");
    }
    if (settings.codec == VideoCodecChoice::proRes422 && settings.container != ExportContainer::mov) {
        throw ExportError::writerFailed("ProRes 422 is stored in MOV files only");
    }
}

void requireSource(DemoProject const& project) {
    auto const size = project.sourceSize;
    double const duration = project.duration();
    if (project.timeline.clips.empty() || duration <= 0)
        throw ExportError::readerFailed("the timeline shows nothing of it");
    if (!(duration <= longestMovie)) throw ExportError::readerFailed("the timeline is longer than a movie can be");
    if (size.width >= 1 && size.height >= 1) return;
    throw ExportError::readerFailed("the project gives its size as " + std::to_string(size.width) + " × " +
                                    std::to_string(size.height) + " pixels");
}

void makeFolder(std::filesystem::path const& folder) {
    std::error_code failure;
    if (!folder.empty()) std::filesystem::create_directories(folder, failure);
    if (failure) {
        throw ExportError::writerFailed("the folder '" + folder.string() + "' cannot be made (" +
                                        systemReason(failure.value()) + ")");
    }
}

/// A frame as large as the settings ask for may not fit into the machine.
template<class Work> auto withMemory(Work const& work) {
    try {
        return work();
    } catch (std::bad_alloc const&) {
        throw ExportError::writerFailed("there is not enough memory for frames of this size");
    }
}

}

std::string_view displayName(ExportStage stage) {
    static constexpr std::array<std::string_view, 3> names{"Preparing", "Rendering", "Finishing"};
    return names[static_cast<std::size_t>(stage)];
}

struct Exporter::State {
    State(DemoProject const& project, ProjectPackage const& package, ExportSettings const& settings,
          ExporterOptions const& options)
        : settings(settings)
        , options(options)
        , composer(withSettings(project, settings), settings.size.evened())
        , recording(package)
        , renderer(package, options.renderer) {
        this->settings.size = settings.size.evened();
    }

    ExportSettings settings;
    ExporterOptions const options;
    FrameComposer const composer;
    RecordingFrames recording;
    Renderer renderer;
    std::atomic<bool> isCancelled{false};

    std::int64_t totalFrames() const;
    void openMedia();
    void prepareBackground();
    MovieWriter makeWriter(std::filesystem::path const& file) const;
    void finish(MovieWriter& writer) const;
    std::filesystem::path writeMovie(std::filesystem::path const& wanted, Progress const& progress);
    Image still(double at);
};

std::int64_t Exporter::State::totalFrames() const {
    // Every frame that begins before the end; a rounding error of the clips' times is no frame.
    double const frames = std::clamp(composer.duration(), 0.0, longestMovie) * static_cast<double>(settings.fps);
    return std::max<std::int64_t>(static_cast<std::int64_t>(std::ceil(frames - 1e-4)), 1);
}

void Exporter::State::openMedia() {
    std::set<std::string_view> assets;
    for (auto const& clip : composer.project().timeline.clips) assets.insert(clip.asset);
    for (auto const asset : assets) recording.open(asset);
}

void Exporter::State::prepareBackground() {
    try {
        renderer.prepare(composer.project(), static_cast<int>(settings.size.width),
                         static_cast<int>(settings.size.height));
    } catch (MediaError const& error) {
        auto const* image = std::get_if<BackgroundStyle::ImageFile>(&composer.project().background.content);
        if (image && error.kind() == MediaError::Kind::missing) throw ExportError::missingAsset(image->assetName);
        throw ExportError::readerFailed(error.detail());
    }
}

MovieWriter Exporter::State::makeWriter(std::filesystem::path const& file) const {
    try {
        return MovieWriter(file, writerSettings(settings, options.encoderThreads));
    } catch (MediaError const& error) {
        bool const isRefused = error.kind() == MediaError::Kind::refused;
        throw ExportError::writerFailed(isRefused ? "video input rejected" : error.detail());
    }
}

void Exporter::State::finish(MovieWriter& writer) const {
    try {
        writer.finish(static_cast<double>(totalFrames()) / static_cast<double>(settings.fps));
    } catch (MediaError const& error) {
        throw ExportError::writerFailed(error.detail());
    }
}

std::filesystem::path Exporter::State::writeMovie(std::filesystem::path const& wanted, Progress const& progress) {
    requireWritable(settings);
    requireSource(composer.project());
    auto const total = totalFrames();
    auto const report = [&](ExportStage stage, std::int64_t framesWritten) {
        if (progress) progress({framesWritten, total, stage});
    };
    report(ExportStage::preparing, 0);
    openMedia();
    prepareBackground();
    makeFolder(wanted.parent_path());
    auto file = unusedFile(wanted);
    auto writer = makeWriter(file);
    runVideoPass({.composer = composer,
                  .recording = recording,
                  .renderer = renderer,
                  .writer = writer,
                  .fps = settings.fps,
                  .totalFrames = total,
                  .isCancelled = isCancelled},
                 progress);
    report(ExportStage::finishing, total);
    finish(writer);
    return file;
}

Image Exporter::State::still(double at) {
    requireDrawable(settings);
    requireSource(composer.project());
    prepareBackground();
    auto const source = composer.source(at);
    auto const screen = source ? recording.frame(source->asset, source->time) : VideoFrame();
    auto const canvas = renderer.render(composer.state(at), composer.project(), screen);
    Image still(canvas.width, canvas.height);
    for (int y = 0; y < canvas.height; ++y) std::copy_n(canvas.row(y), 4 * std::size_t(canvas.width), still.row(y));
    return still;
}

Exporter::Exporter(DemoProject const& project, ProjectPackage const& package, ExportSettings const& settings,
                   ExporterOptions const& options)
    : state_(std::make_unique<State>(project, package, settings, options)) {}

Exporter::~Exporter() = default;

std::filesystem::path Exporter::exportMovie(std::filesystem::path const& file, Progress const& progress) {
    auto& state = *state_;
    ExportTurn const turn;
    SerialQueue queue("com.tavaro.export.video");
    std::filesystem::path written;
    queue.sync([&] { written = withMemory([&] { return state.writeMovie(file, progress); }); });
    return written;
}

Image Exporter::renderStill(double at) {
    return withMemory([&] { return state_->still(at); });
}

double Exporter::duration() const { return state_->composer.duration(); }

std::int64_t Exporter::totalFrames() const { return state_->totalFrames(); }

void Exporter::cancel() { state_->isCancelled = true; }

}
