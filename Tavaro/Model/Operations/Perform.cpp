#include <Tavaro/Model/Operations/Perform.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Private/NamedAssets.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

/// What was missing before may stay so, that the rest of such a project can be edited.
void expectAssets(ProjectPackage const& package, DemoProject const& before, DemoProject const& after) {
    auto const known = namedAssets(before);
    for (auto const& [name, path] : namedAssets(after)) {
        std::error_code ignored;
        if (known.contains(name) || std::filesystem::exists(package.assetURL(name), ignored)) continue;
        throw OperationError(OperationError::Kind::badPatch,
                             fmt::format("{}: the project has no media file “{}”.", path, excerpt(name)));
    }
}

}

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

EditReport perform(DemoProject& project, Operation const& operation, ProjectPackage const& package) {
    auto edited = project;
    auto const report = perform(edited, operation);
    expectAssets(package, project, edited);
    project = std::move(edited);
    return report;
}

EditReport perform(DemoProject& project, std::vector<operations::FieldChange> const& changes,
                   ProjectPackage const& package) {
    auto edited = project;
    EditReport report{.operation = std::string(operations::SetFields::info.name),
                      .summary = apply(edited, changes),
                      .isChanged = !(edited == project),
                      .durationBefore = project.duration(),
                      .duration = edited.duration()};
    expectAssets(package, project, edited);
    project = std::move(edited);
    return report;
}

}
