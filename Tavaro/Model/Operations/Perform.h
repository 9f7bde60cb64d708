#pragma once

#include <Tavaro/Model/Operations/Operation.h>

#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;

/// What an operation did.
struct EditReport {
    std::string operation; // its name
    std::string summary;   // a line without a full stop
    bool isChanged = false;
    double durationBefore = 0; // output seconds
    double duration = 0;

    static constexpr auto fields = std::tuple{
        field("operation", &EditReport::operation), field("summary", &EditReport::summary),
        field("isChanged", &EditReport::isChanged), field("durationBefore", &EditReport::durationBefore),
        field("duration", &EditReport::duration),
    };
    bool operator==(EditReport const&) const = default;
};
static_assert(listsEveryField<EditReport>);

/// Checks the operation's parameters and makes it. Refuses what would leave nothing of the video. Throws
/// `OperationError` and what the edits of the document throw; the document is then as it was.
EditReport perform(DemoProject& project, Operation const& operation);
/// The same for a document of that package: also refuses to name media files that the package does not have.
EditReport perform(DemoProject& project, Operation const& operation, ProjectPackage const& package);

/// The same for fields that are changed at once.
EditReport perform(DemoProject& project, std::vector<operations::FieldChange> const& changes,
                   ProjectPackage const& package);

}
