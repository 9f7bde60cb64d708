#pragma once

#include <Tavaro/Studio/Editor/DragStep.h>
#include <Tavaro/Studio/Timeline/TimelineIntent.h>

#include <optional>

namespace tavaro {

/// Carries the edits of a hand on the timeline out as steps of a project's history: a drag is one step, from the
/// document as it was when it began, and none where it ends where it began or is taken back. Where somebody else edits
/// meanwhile, that edit ends the drag: what was dragged until then stays.
class TimelineSteps {
public:
    explicit TimelineSteps(OpenProject& project) : project_(project) {}

    /// True for an intent that was an edit, a beginning or an end of one; others are the window's. Throws what
    /// `OpenProject::edit` throws, and then nothing has changed.
    bool take(TimelineIntent const& intent);

private:
    OpenProject& project_;
    std::optional<DragStep> drag_;
};

}
