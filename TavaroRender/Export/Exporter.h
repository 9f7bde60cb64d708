#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include <TavaroCore/Values/TimeRange.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroRender/Renderer/Renderer.h>

namespace tavaro {

class ProjectPackage;
struct DemoProject;
struct ExportSettings;

enum class ExportStage { preparing, enhancing, rendering, finishing };
/// "Preparing", "Enhancing sound", "Rendering", "Finishing".
std::string_view displayName(ExportStage stage);

struct ExportProgress {
    std::int64_t framesWritten = 0;
    std::int64_t totalFrames = 0;
    ExportStage stage = ExportStage::preparing;
    double enhanced = 0; // share of the sound that is enhanced, 0…1
};

struct ExporterOptions {
    RendererOptions renderer;
    int encoderThreads = 0; // 0: one a core; another number, other bytes
    EncoderChoice encoder = EncoderChoice::automatic;
    std::filesystem::path soundCache; // for enhanced sound; empty: the user's cache folder
    std::optional<TimeRange> range;   // the part of the film to write, in its seconds; none: the whole
};

/// Makes the movie of a project. Made for one export. All failures are `ExportError`.
class Exporter {
public:
    /// `settings` decide over those remembered in the project. Sides are rounded down to even numbers.
    Exporter(DemoProject const& project, ProjectPackage const& package, ExportSettings const& settings,
             ExporterOptions const& options = {});
    ~Exporter();
    Exporter(Exporter const&) = delete;
    Exporter& operator=(Exporter const&) = delete;

    /// Called on the export's own thread.
    using Progress = std::function<void(ExportProgress const&)>;

    /// Writes the movie to `file`, or to the next free name where that is taken, and returns where it lies. Makes the
    /// folders above it. The file appears complete or not at all. One export at a time in a process; any other is
    /// refused. What `progress` throws ends the export and reaches the caller.
    std::filesystem::path exportMovie(std::filesystem::path const& file, Progress const& progress = {});

    /// The same for a GIF that plays for ever, without sound. Its failures of writing are `gifFailed`.
    std::filesystem::path exportGIF(std::filesystem::path const& file, Progress const& progress = {});

    /// Whichever of the two the settings' container asks for.
    std::filesystem::path exportFile(std::filesystem::path const& file, Progress const& progress = {});

    /// Seconds of what is written: of the whole film with its title cards, or of the part of it.
    double duration() const;

    /// Frames that an export writes.
    std::int64_t totalFrames() const;

    /// Any thread. Ends the export under way, or the next one, with `cancelled`.
    void cancel();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
