#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>
#include <Tavaro/Model/Project/OpenProjects.h>

#include <TavaroCore/Records/Observers.h>

#include <chrono>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavaro {

class ProjectCatalogue;

/// Looks at an application's new takes for private text, where that is due, beside whoever uses them: one after the
/// other, and not while something is recorded. A take that somebody else looks at already, as its window does, is left
/// to them. What was found is kept, also of a scan that is stopped in the middle, which goes on from there when it is
/// taken up next. Belongs to the main queue.
class NewTakeScans {
public:
    NewTakeScans(MainQueue& queue, OpenProjects& projects, ProjectCatalogue& catalogue);

    /// Begins in a moment, so that a window that is about to show the take comes first. Nothing where none is due.
    void add(std::filesystem::path const& package);
    /// Adds those of the library: what programs that ended have left.
    void takeUp();
    /// While it is held nothing is looked at; what is under way stops, and goes on later.
    void hold(bool isHeld);
    /// Stops for good.
    void end();
    bool isBusy() const { return !waiting_.empty(); }
    /// Whether what was found until the end is yet to be kept.
    bool isStopping() const { return hasEnded_ && running_; }

    /// Whether it is to be looked at, or is now.
    bool isExpected(std::filesystem::path const& package) const;
    /// Told once, when one that is expected is over: nothing, or why it was not looked at as a whole, an `Error`.
    using Ended = std::function<void(std::exception_ptr const& failure)>;
    void whenOver(std::filesystem::path const& package, Ended handler);

    struct Progress {
        std::filesystem::path package;
        ScanProgress scan;
    };
    using Observation = Observers<Progress const&>::Observation;
    [[nodiscard]] Observation observe(std::function<void(Progress const&)> observer) {
        return observers_.add(std::move(observer));
    }

    /// Stands in for the real scan from here on.
    void scanBy(MovieScan scan) { scan_ = std::move(scan); }

private:
    using Opened = OpenProjects::Opened;
    using Time = std::chrono::steady_clock::time_point;
    using ScanJob = Job<MadePrivacyScan, ScanProgress>;

    struct Take {
        std::filesystem::path package;
        std::vector<Ended> handlers = {};
    };
    struct Running {
        Opened project;
        DueScan due;
        std::unique_ptr<ScanJob> job = {};
    };

    void next();
    void begin(Opened const& project);
    void finish();
    void keep(std::shared_ptr<MadePrivacyScan const> const& made, Time end);
    void take(MadePrivacyScan const& made);
    void over(std::exception_ptr const& failure);
    std::deque<Take>::const_iterator find(std::filesystem::path const& package) const;

    MainQueue& queue_;
    OpenProjects& projects_;
    ProjectCatalogue& catalogue_;
    MovieScan scan_ = scanMovie;
    std::deque<Take> waiting_; // the first is the one that is opened or looked at
    std::optional<Running> running_;
    bool isOpening_ = false, isHeld_ = false, hasEnded_ = false;
    Observers<Progress const&> observers_;
    SideQueue side_;
};

}
