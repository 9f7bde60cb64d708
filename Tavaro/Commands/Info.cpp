#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Model/OpenProject.h>

#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

std::string time(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

void printZoom(ZoomEvent const& zoom) {
    fmt::print("  {}–{}  {:.2f}×{} at ({:.2f}, {:.2f}){}{}\n", time(zoom.start), time(zoom.end()), zoom.scale,
               zoom.isLoupe() ? " loupe" : "", zoom.center.x, zoom.center.y, zoom.isAutomatic ? ", automatic" : "",
               zoom.note ? ", " + *zoom.note : "");
}

void printOutline(DemoProject const& project) {
    auto const& log = *project.metadata;
    fmt::print("{}\n", project.name);
    fmt::print("mode        {}\n", displayName(project.mode));
    fmt::print("duration    {}\n", time(project.duration()));
    fmt::print("recording   {}×{}\n", project.sourceSize.width, project.sourceSize.height);
    fmt::print("canvas      {}×{}\n", project.canvas.width, project.canvas.height);
    fmt::print("background  {}\n", project.background.displayName());
    fmt::print("frame       {}\n", displayName(project.screen.frame));
    if (log.health != CaptureHealth{})
        fmt::print("capture     {}\n", log.health.summary()); // imported movies have none
    fmt::print("log         {}, {}, {}\n", counted(log.cursorSamples.size(), "pointer sample"),
               counted(log.clicks.size(), "click"), counted(log.keystrokes.size(), "key"));
    fmt::print("clips       {}\n", project.timeline.clips.size());
    for (auto const& clip : project.timeline.clips) {
        fmt::print("  {}–{}  {} from {}{}\n", time(clip.start), time(clip.end()), clip.asset, time(clip.sourceStart),
                   clip.speed == 1 ? "" : fmt::format(" at {:g}×", clip.speed));
    }
    fmt::print("zooms       {}\n", project.zoomEvents.size());
    for (auto const& zoom : project.zoomEvents) printZoom(zoom);
}

}

void addInfo(CLI::App& app) {
    struct Options {
        std::string package;
        bool asJSON = false;
    };
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("info", "Shows what a project holds");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_flag("--json", options->asJSON, "print the whole document");
    command->callback([options] {
        auto const project = openProject(options->package).project;
        if (options->asJSON)
            fmt::print("{}\n", encodeProject(project));
        else
            printOutline(project);
    });
}

}
