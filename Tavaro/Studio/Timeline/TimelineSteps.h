#pragma once

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Timeline/DraggedItems.h>
#include <Tavaro/Studio/Timeline/TimelineIntent.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tavaro {

/// Carries the edits of a hand on the timeline out as steps of a project's history: a drag is one step, from the
/// document as it was when it began, and none where it ends where it began or is taken back. Where somebody else edits
/// meanwhile, that edit ends the drag: what was dragged until then stays. A drag that changes nothing but the inside of
/// some items costs by those, however long the film is.
class TimelineSteps {
public:
    explicit TimelineSteps(OpenProject& project) : project_(project) {}

    /// True for an intent that was an edit, a beginning or an end of one; others are the window's. Throws what
    /// `OpenProject::edit` throws, and then nothing has changed.
    bool take(TimelineIntent const& intent);

private:
    struct Drag {
        std::string name;
        EditGroup group;
        DemoProject before;
        std::uint64_t revision = 0; // as the drag left the document
        std::optional<DraggedItems> items = {};
        bool isWhole = false; // it has changed more than the inside of some items
    };

    void step(TimelineIntent const& intent);
    bool stepOfItems(TimelineIntent const& intent);

    OpenProject& project_;
    std::optional<Drag> drag_;
};

}
