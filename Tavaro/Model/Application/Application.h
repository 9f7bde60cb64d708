#pragma once

#include <Tavaro/Model/Exporting/ExportController.h>
#include <Tavaro/Model/Exporting/FrameDrawer.h>
#include <Tavaro/Model/Privacy/NewTakeScans.h>
#include <Tavaro/Model/Project/OpenProjects.h>
#include <Tavaro/Model/Project/ProjectCatalogue.h>
#include <Tavaro/Model/Recording/RecordingController.h>
#include <Tavaro/Model/Thumbnails/ThumbnailKeeper.h>

#include <TavaroCapture/Sources/SourceList.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// Where an application finds and puts things.
struct ApplicationPlaces {
    std::vector<std::filesystem::path> library; // folders of projects; takes are saved into the first
    std::filesystem::path index;                // the library's memory of them
    std::filesystem::path preferences;

    /// The user's: "Movies/Tavaro", and projects that were never put anywhere.
    static ApplicationPlaces usual();
};

/// Everything that an application owns, whoever uses it: windows, agents, or both at once. It belongs to the main
/// queue; nothing here waits for a disk longer than saving a document takes, and long work goes on beside the queue
/// without holding any lock.
class Application {
public:
    explicit Application(MainQueue& queue, ApplicationPlaces places = ApplicationPlaces::usual());

    Preferences& preferences() { return preferences_; }
    ProjectCatalogue& catalogue() { return catalogue_; }
    OpenProjects& projects() { return projects_; }
    RecordingController& recorder() { return recorder_; }
    ExportController& exporter() { return exporter_; }
    FrameDrawer& frames() { return frames_; }
    NewTakeScans& newTakes() { return newTakes_; }

    /// A free place in the library for a project of that name.
    std::filesystem::path newProject(std::string_view name) const;
    /// Where its projects are, the place for new ones first.
    std::vector<std::filesystem::path> const& library() const { return places_.library; }

    /// What can be recorded now. The failure is `CaptureError`.
    void sources(std::function<void(Outcome<SourceList> const&)> answer);
    /// The project of that id, opened where it is not open yet. The failures are `NoSuchProject` and `FileError`.
    void project(UUID const& id, std::function<void(Outcome<OpenProjects::Opened> const&)> answer);
    /// Starts a recording that is saved into the library, named for the time, unless the request says where. Throws
    /// `RecordingError` and `FileError`.
    void record(RecordingRequest request, RecordingHandlers handlers = {});
    /// Of an unfinished recording, into the library under that name. It is looked at for private text where the user
    /// wants that of new takes, once somebody opens it or `newTakes` hears of it.
    TakeProject recovered(std::string_view name);

    /// Whether something is under way that an ending application waits for.
    bool isBusy() const {
        return !recorder_.isIdle() || exporter_.isExporting() || thumbnails_.isDrawing() || newTakes_.isStopping();
    }
    /// Begins to end: a take is saved, a countdown, an export and scans are cancelled, thumbnails are drawn. It is done
    /// when nothing is busy.
    void end();

private:
    ApplicationPlaces const places_;
    Preferences preferences_;
    ProjectCatalogue catalogue_;
    OpenProjects projects_;
    RecordingController recorder_;
    ExportController exporter_;
    FrameDrawer frames_;
    ThumbnailKeeper thumbnails_;
    NewTakeScans newTakes_;
    RecordingController::Observation recording_;
    SideQueue side_;
};

}
