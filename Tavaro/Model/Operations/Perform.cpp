#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Project/DemoProject.h>

namespace tavaro {

EditReport perform(DemoProject& project, Operation const& operation) {
    expectParameters(operation);
    auto edited = project;
    auto const summary = std::visit([&](auto const& record) { return apply(edited, record); }, operation);
    if (edited.timeline.clips.empty() && !project.timeline.clips.empty()) {
        throw OperationError(OperationError::Kind::notPossible,
                             "The edit would leave nothing of the video, and is not made.");
    }
    EditReport const report{.operation = std::string(infoOf(operation).name),
                            .summary = summary,
                            .isChanged = !(edited == project),
                            .durationBefore = project.duration(),
                            .duration = edited.duration()};
    project = std::move(edited);
    return report;
}

}
