#pragma once

#include <Tavaro/Model/Jobs/Job.h>

#include <TavaroCore/Direction/DirectorReport.h>
#include <TavaroCore/Direction/PolishOptions.h>
#include <TavaroCore/Project/DemoProject.h>

#include <optional>

namespace tavaro {

/// How a project is polished; what is not said is as the project has it.
struct PolishChoices {
    PolishOptions options;
    std::optional<DemoMode> mode;                      // the project remembers it
    std::optional<CameraDirectorStyle> cameraDirector; // likewise

    static constexpr auto fields = std::tuple{
        field("options", &PolishChoices::options),
        field("mode", &PolishChoices::mode),
        field("cameraDirector", &PolishChoices::cameraDirector),
    };
    bool operator==(PolishChoices const&) const = default;
};
static_assert(listsEveryField<PolishChoices>);

struct PolishedProject {
    DemoProject project;
    DirectorReport report;
};

/// The name of the step in a project's history.
inline constexpr char const* polishStep = "Auto Polish";

/// The document as Auto Polish makes it; what was made by hand stays.
PolishedProject polished(DemoProject project, PolishChoices const& choices);
/// The same for a document that is open meanwhile: who takes the result as a step looks first whether the document has
/// still the revision that it was made of.
Job<PolishedProject> polishJob(MainQueue& queue, DemoProject project, PolishChoices choices);

}
