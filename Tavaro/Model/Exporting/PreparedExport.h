#pragma once

#include <Tavaro/Model/Exporting/ExportChoices.h>
#include <Tavaro/Model/Jobs/Job.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>

#include <memory>
#include <string>

namespace tavaro {

/// A film that will be, or was, written.
struct ExportedFilm {
    std::string path;
    ExportContainer container = ExportContainer::mp4;
    std::optional<VideoCodecChoice> codec; // none: a GIF
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t fps = 0;
    std::int64_t frames = 0;
    double duration = 0; // seconds
    std::int64_t estimatedBytes = 0;
    std::optional<std::int64_t> bytes; // once it is written

    static constexpr auto fields = std::tuple{
        field("path", &ExportedFilm::path),
        field("container", &ExportedFilm::container),
        field("codec", &ExportedFilm::codec),
        field("width", &ExportedFilm::width),
        field("height", &ExportedFilm::height),
        field("fps", &ExportedFilm::fps),
        field("frames", &ExportedFilm::frames),
        field("duration", &ExportedFilm::duration),
        field("estimatedBytes", &ExportedFilm::estimatedBytes),
        field("bytes", &ExportedFilm::bytes),
    };
    bool operator==(ExportedFilm const&) const = default;
};
static_assert(listsEveryField<ExportedFilm>);

/// What an export comes to, settled before the first frame: of the document as it was then.
class PreparedExport {
public:
    /// Throws `Error` as `requireUsable`.
    PreparedExport(ProjectPackage package, DemoProject const& project, ExportChoices const& choices,
                   EncoderChoice encoder = EncoderChoice::automatic);

    ExportSettings const& settings() const { return settings_; }
    /// The size that was asked for, where its sides are not even and another is written.
    std::optional<Size2> const& oddSize() const { return oddSize_; }
    /// Under a name that is free now.
    ExportedFilm plan() const;

    /// Writes the film and says where it lies. One thread, once.
    ExportedFilm write(JobReporter<ExportProgress>& reporter);

private:
    ProjectPackage package_;
    DemoProject project_;
    std::optional<Size2> oddSize_;
    ExportSettings settings_;
    std::filesystem::path target_;
    Exporter exporter_;
};

struct ExportRequest {
    ProjectPackage package;
    DemoProject project; // as it is now: what is edited meanwhile is not in the film
    ExportChoices choices;
    EncoderChoice encoder = EncoderChoice::automatic;
};

/// Writes the film. What of it stands still because a recording is cut short comes as remarks. Fails with
/// `ExportError`, also when it is cancelled, and then leaves no file.
Job<ExportedFilm, ExportProgress> exportJob(MainQueue& queue, std::shared_ptr<PreparedExport> prepared);
/// The same, prepared beside the main queue as well: that takes a moment for a long take.
Job<ExportedFilm, ExportProgress> exportJob(MainQueue& queue, ExportRequest request);

}
