#pragma once

#include <Tavaro/Model/Exporting/PreparedExport.h>
#include <Tavaro/Model/Jobs/Outcome.h>

#include <TavaroCore/Records/Observers.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tavaro {

/// The export of an application under way.
struct RunningExport {
    std::filesystem::path package;
    ExportProgress progress;
    double share = 0; // done, 0…1, never going back
};

using ExportOutcome = Outcome<ExportedFilm>;

struct ExportHandlers {
    std::function<void(std::string const&)> remark; // what the user should know beside the film, as a sentence
    std::function<void(ExportOutcome const&)> over; // last; another export may be started from here
};

/// The exports of an application, one at a time. It belongs to the main queue, and calls its handlers and observers
/// there. A controller that goes away cancels its export, which then leaves no file.
class ExportController {
public:
    explicit ExportController(MainQueue& queue) : queue_(queue) {}
    ExportController(ExportController const&) = delete;
    ExportController& operator=(ExportController const&) = delete;

    bool isExporting() const { return job_ != nullptr; }
    std::optional<RunningExport> const& running() const { return running_; }

    /// Returns at once. Throws `ExportError` (`alreadyExporting`) while another export runs, and `Error` as
    /// `requireUsable`; everything later is the outcome's.
    void start(ExportRequest request, ExportHandlers handlers = {});
    /// Ends the export under way, if there is one; its outcome says so.
    void cancel();

    using Observation = Observers<std::optional<RunningExport> const&>::Observation;
    /// Called after every change for as long as the observation lives.
    [[nodiscard]] Observation observe(std::function<void(std::optional<RunningExport> const&)> observer) {
        return observers_.add(std::move(observer));
    }

private:
    void follow(ExportProgress const& progress);
    void finish();

    MainQueue& queue_;
    std::optional<RunningExport> running_;
    std::unique_ptr<Job<ExportedFilm, ExportProgress>> job_;
    std::function<void(ExportOutcome const&)> over_;
    Observers<std::optional<RunningExport> const&> observers_;
};

}
