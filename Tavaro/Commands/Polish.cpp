#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Making/Polish.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>

namespace tavaro::commands {

namespace {

struct Options {
    std::string package;
    std::string mode;
    std::string cameraDirector;
    PolishOptions polish;
    bool asReport = false;
    bool asJSON = false;
};

/// "zoomFollowsCursor" → "zoom-follows-cursor"
std::string flagName(std::string_view field) {
    std::string name;
    for (char const c : field) {
        if (c >= 'A' && c <= 'Z') {
            name += '-';
            name += static_cast<char>(c - 'A' + 'a');
        } else {
            name += c;
        }
    }
    return name;
}

void printReport(DirectorReport const& report, DemoProject const& project) {
    auto const automatic = [](auto const& items) {
        return std::count_if(items.begin(), items.end(), [](auto const& item) { return item.isAutomatic; });
    };
    terminal::say("{:<24} {}\n", "zooms added", report.zoomsAdded);
    terminal::say("{:<24} {}\n", "clicks detected", report.clicksDetected);
    terminal::say("{:<24} {}\n", "pointer samples smoothed", report.cursorSamplesSmoothed);
    terminal::say("{:<24} {}, {:.1f} s\n", "silences found", report.silencesFound, report.silenceSecondsRemovable);
    terminal::say("{:<24} {}\n", "keycaps added", report.overlaysAdded);
    terminal::say("{:<24} {}\n", "captions made", report.captionCues);
    terminal::say("{:<24} {}\n", "camera scenes", automatic(project.layoutCues));
    for (auto const& cue : project.layoutCues) {
        if (cue.isAutomatic)
            terminal::say("  {:7.1f} s  {:<11} {}\n", cue.time, nameOf(cue.scene), cue.reason.value_or(""));
    }
    terminal::say("{:<24} {}\n", "camera moves", automatic(project.cameraMoves));
}

PolishChoices choicesOf(Options const& options) {
    return {.options = options.polish,
            .mode = enumNamed<DemoMode>(options.mode),
            .cameraDirector = enumNamed<CameraDirectorStyle>(options.cameraDirector)};
}

/// Holds the project from loading to saving.
PolishedProject polishAndSave(std::string const& package, PolishChoices const& choices) {
    OpenProject open(package, LockHolding::whileOpen);
    MainQueue queue;
    auto job = polishJob(queue, open.document(), choices);
    job.start();
    auto const& result = job.wait();
    open.commit(polishStep, [&](DemoProject& project) { project = result.project; });
    return result;
}

void polish(Options const& options) {
    auto const [project, report] = polishAndSave(options.package, choicesOf(options));
    writeThumbnail(ProjectPackage(packagePath(options.package)), project);
    if (options.asJSON) {
        terminal::sayJSON(encodeJSON(report));
        return;
    }
    for (auto const& line : report.summaryLines()) terminal::say("{}\n", line);
    if (options.asReport) printReport(report, project);
}

}

void addPolish(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("polish", "Turns the raw take into an edit; what was made by hand stays");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_option("--mode", options->mode, "what kind of demo it is; the project remembers it")
        ->check(modeNames());
    forEachField<PolishOptions>([&](auto const& field) {
        auto const name = flagName(field.name);
        auto const text = options->polish.*field.member ? "" : "switch it on";
        command->add_flag("--" + name + ",!--no-" + name, options->polish.*field.member, text);
    });
    command
        ->add_option("--camera-director", options->cameraDirector,
                     "how the camera is directed; the project remembers it")
        ->check(isNameOf<CameraDirectorStyle>());
    command->add_flag("--report", options->asReport,
                      "print every count, and the scenes of the camera with their reasons");
    command->add_flag("--json", options->asJSON, "print the report as JSON");
    command->callback([options] { polish(*options); });
}

}
