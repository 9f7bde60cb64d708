#include <Tavaro/Model/Making/Polish.h>

#include <TavaroCore/Direction/CameraDirector.h>
#include <TavaroCore/Direction/SmartDirector.h>

namespace tavaro {

PolishedProject polished(DemoProject project, PolishChoices const& choices) {
    if (choices.mode) project.mode = *choices.mode;
    if (choices.cameraDirector) {
        project.cameraDirectorStyle = *choices.cameraDirector;
        if (*choices.cameraDirector == CameraDirectorStyle::off) clearCameraDirection(project);
    }
    auto const report = SmartDirector(choices.options, project.mode).polish(project);
    return {std::move(project), report};
}

Job<PolishedProject> polishJob(MainQueue& queue, DemoProject project, PolishChoices choices) {
    return {queue, "com.tavaro.job.polish",
            [project = std::move(project), choices](JobReporter<NoProgress>& reporter) mutable {
                reporter.stopIfCancelled("Auto Polish was cancelled.");
                return polished(std::move(project), choices);
            }};
}

}
