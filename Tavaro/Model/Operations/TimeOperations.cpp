#include <Tavaro/Model/Operations/TimeOperations.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro::operations {

namespace {

/// The span of an operation, once it is known to be in the edit.
template<class Operation> TimeRange spanOf(DemoProject const& project, Operation const& operation) {
    TimeRange const span{operation.start, operation.end - operation.start};
    expectSpan(project, span);
    return span;
}

}

std::string apply(DemoProject& project, Trim const& trim) {
    auto const kept = spanOf(project, trim);
    keepTimeRange(project, kept);
    return "Kept " + shownSpan(kept);
}

std::string apply(DemoProject& project, Cut const& cut) {
    auto const gone = spanOf(project, cut);
    removeTimeRange(project, gone.start, gone.duration);
    return "Cut " + shownSpan(gone);
}

std::string apply(DemoProject& project, ChangeSpeed const& change) {
    auto const span = spanOf(project, change);
    changeSpeed(project, span, change.rate);
    return fmt::format("{} plays {:g} times as fast", shownSpan(span), change.rate);
}

std::string apply(DemoProject& project, Split const& split) {
    expectInside(project, split.time);
    if (splitClip(project, split.time)) return "Split at " + shownTime(split.time);
    throw OperationError(OperationError::Kind::notPossible,
                         fmt::format("There is nothing to split at {:g} s: a clip begins or ends there.", split.time));
}

std::string apply(DemoProject& project, InsertTime const& insert) {
    expectInside(project, insert.time);
    insertTime(project, std::min(insert.time, project.duration()), insert.duration);
    return fmt::format("The frame at {} is held for {:g} s", shownTime(insert.time), insert.duration);
}

}
