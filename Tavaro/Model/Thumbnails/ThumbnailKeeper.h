#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <memory>
#include <set>
#include <vector>

namespace tavaro {

/// Keeps the library's small pictures of open projects true: where the picture of one changed and is saved, it is drawn
/// anew as soon as nothing has changed for a moment, from the document as it is then. Belongs to the main queue, and
/// draws beside it.
class ThumbnailKeeper {
public:
    static constexpr double usualQuiet = 2; // seconds

    explicit ThumbnailKeeper(MainQueue& queue, double quietSeconds = usualQuiet);
    ~ThumbnailKeeper();
    ThumbnailKeeper(ThumbnailKeeper const&) = delete;
    ThumbnailKeeper& operator=(ThumbnailKeeper const&) = delete;

    /// From now on, for as long as it is open.
    void watch(std::shared_ptr<OpenProject> const& project);
    /// Draws at once what waits for a quiet moment.
    void hurry();
    bool isDrawing() const { return drawing_ > 0; }

private:
    struct Watched {
        std::weak_ptr<OpenProject> project;
        OpenProject::Observation observation;
        bool isStale = false;
    };

    void note(Watched& watched, ProjectChange const& change);
    void waitForQuiet();
    void draw(OpenProject const& project);

    double const quietSeconds_;
    std::vector<std::unique_ptr<Watched>> watched_;
    std::set<std::shared_ptr<OpenProject>> waiting_; // stays open until it is drawn
    int drawing_ = 0;
    SideQueue side_;
};

}
