#include <Tavaro/Model/Thumbnails/ThumbnailKeeper.h>

#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

/// Fields of the document that no frame shows.
constexpr std::array<std::string_view, 12> unseenFields{
    "version",    "id",       "name",      "createdAt",     "modifiedAt",          "audioTracks",
    "transcript", "silences", "voiceover", "redactionScan", "cameraDirectorStyle", "export"};

bool isSeen(ChangedFields const& fields) {
    return std::ranges::any_of(fields.names(), [](std::string_view name) {
        return std::ranges::find(unseenFields, name) == unseenFields.end();
    });
}

}

ThumbnailKeeper::ThumbnailKeeper(MainQueue& queue, double quietSeconds)
    : quietSeconds_(quietSeconds)
    , side_(queue, "com.tavaro.thumbnails") {}

ThumbnailKeeper::~ThumbnailKeeper() { side_.thread().stopTimer(); }

void ThumbnailKeeper::watch(std::shared_ptr<OpenProject> const& project) {
    std::erase_if(watched_, [](auto const& each) { return each->project.expired(); });
    auto& watched = *watched_.emplace_back(std::make_unique<Watched>(Watched{.project = project}));
    watched.observation = project->observe([this, &watched](ProjectChange const& change) { note(watched, change); });
}

/// Who changed it from outside looks after the picture, too.
void ThumbnailKeeper::note(Watched& watched, ProjectChange const& change) {
    auto const project = watched.project.lock();
    watched.isStale = watched.isStale || (isSeen(change.fields) && !change.fromOutside);
    if (!project || !watched.isStale || project->hasUnsavedChanges()) return;
    watched.isStale = false;
    waiting_.insert(project);
    waitForQuiet();
}

void ThumbnailKeeper::waitForQuiet() {
    side_.thread().startTimer(mediaClockNow() + quietSeconds_, quietSeconds_, [this](double) {
        side_.thread().stopTimer();
        side_.ask([] { return true; }, [this](auto const&) { hurry(); });
    });
}

void ThumbnailKeeper::hurry() {
    for (auto const& project : std::exchange(waiting_, {})) draw(*project);
}

void ThumbnailKeeper::draw(OpenProject const& project) {
    ++drawing_;
    side_.ask(
        [package = project.package(), document = project.document()] { return writeThumbnail(package, document); },
        [this](auto const&) { --drawing_; });
}

}
