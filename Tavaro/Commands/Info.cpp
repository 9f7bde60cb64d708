#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TimelineDrawing.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Recording/HealthRemarks.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <sys/ioctl.h>
#include <unistd.h>

namespace tavaro::commands {

namespace {

constexpr std::size_t fewItems = 12;
constexpr std::size_t shortText = 48; // bytes of a text that an outline shows

std::string time(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }
std::string span(TimeRange const& range) { return time(range.start) + "–" + time(range.end()); }

/// The first line of a text, cut at a character's border.
std::string beginning(std::string_view text) {
    auto const line = text.substr(0, text.find('\n'));
    if (line.size() == text.size() && line.size() <= shortText) return std::string(line);
    auto end = std::min(line.size(), shortText);
    while (end > 0 && end < line.size() && (line[end] & 0xC0) == 0x80) --end;
    return std::string(line.substr(0, end)) + "…";
}

std::string described(VideoClip const& clip) {
    auto const source = clip.asset.empty() ? std::string("(no movie)") : clip.asset;
    auto const from = fmt::format("{}  {} from {}", span(clip.range()), source, time(clip.sourceStart));
    auto const speed = clip.speed == 0 ? ", held" : clip.speed == 1 ? "" : fmt::format(" at {:g}×", clip.speed);
    return from + speed + (clip.isMuted ? ", muted" : "");
}

std::string described(ZoomEvent const& zoom) {
    return fmt::format("{}  {:.2f}×{} at ({:.2f}, {:.2f}){}{}", span(zoom.range()), zoom.scale,
                       zoom.isLoupe() ? " loupe" : "", zoom.center.x, zoom.center.y,
                       zoom.isAutomatic ? ", automatic" : "", zoom.note ? ", " + *zoom.note : "");
}

std::string textOf(OverlayKind const& kind) {
    return std::visit(
        [](auto const& content) -> std::string {
            if constexpr (requires { content.text; }) return ": " + beginning(content.text);
            if constexpr (requires { content.keys; }) return fmt::format(": {}", fmt::join(content.keys, " "));
            return {};
        },
        kind.content);
}

std::string described(Overlay const& overlay) {
    return fmt::format("{}  {}{}{}", span(overlay.range()), OverlayKind::caseNames[overlay.kind.content.index()],
                       textOf(overlay.kind), overlay.isAutomatic ? ", automatic" : "");
}

std::string described(CaptionCue const& cue) { return span(cue.range()) + "  " + beginning(cue.text); }

std::string described(SilenceSpan const& silence) {
    return fmt::format("{}  {:.1f} s{}", span(silence.range()), silence.duration, silence.isRemoved ? "" : ", kept");
}

std::string described(LayoutCue const& cue) {
    return fmt::format("{}  {}{}", time(cue.time), nameOf(cue.scene), cue.reason ? "  " + *cue.reason : "");
}

std::string described(AudioTrack const& track) {
    std::string treatment;
    if (track.isMuted) treatment += ", muted";
    if (track.gain != 1) treatment += fmt::format(", volume {:g}", track.gain);
    if (track.noiseReduction) treatment += ", noise reduction";
    if (track.voiceClarity) treatment += ", voice clarity";
    if (track.normalize) treatment += ", normalised";
    if (track.duckedBy) treatment += fmt::format(", lowered by {}", nameOf(*track.duckedBy));
    return fmt::format("{}  {}{}", nameOf(track.role), counted(track.clips.size(), "clip"), treatment);
}

/// The size of a list and its items, the first ones only unless all are wanted.
template<class Item> void printList(std::string_view label, std::vector<Item> const& items, bool all) {
    terminal::say("{:<12}{}\n", label, items.size());
    auto const shown = all || items.size() <= fewItems ? items.size() : fewItems - 1;
    for (std::size_t i = 0; i < shown; ++i) terminal::say("  {}\n", described(items[i]));
    if (shown < items.size()) terminal::say("  … and {} more (--all)\n", items.size() - shown);
}

/// A list that most projects do not have.
template<class Item> void printListIfAny(std::string_view label, std::vector<Item> const& items, bool all) {
    if (!items.empty()) printList(label, items, all);
}

void printFacts(DemoProject const& project) {
    auto const& log = *project.metadata;
    terminal::say("{}\n", project.name);
    terminal::say("mode        {}\n", displayName(project.mode));
    terminal::say("duration    {}\n", time(project.duration()));
    terminal::say("recording   {}×{}\n", project.sourceSize.width, project.sourceSize.height);
    terminal::say("canvas      {}×{}\n", project.canvas.width, project.canvas.height);
    terminal::say("background  {}\n", project.background.displayName());
    terminal::say("frame       {}\n", displayName(project.screen.frame));
    if (project.cameraAsset) terminal::say("camera      {}, {}\n", *project.cameraAsset, nameOf(project.camera.shape));
    if (log.health != CaptureHealth{})
        terminal::say("capture     {}\n", log.health.summary()); // imported movies have none
    for (auto const& remark : healthRemarks(log.health)) terminal::say("            {}\n", remark);
    terminal::say("log         {}, {}, {}\n", counted(log.cursorSamples.size(), "pointer sample"),
                  counted(log.clicks.size(), "click"), counted(log.keystrokes.size(), "key"));
    if (project.transcript) terminal::say("transcript  {}\n", counted((*project.transcript)->words.size(), "word"));
}

int columns() {
    winsize size{};
    bool const isTerminal = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isTerminal ? std::min<int>(size.ws_col, 160) : 100;
}

void printOutline(DemoProject const& project, bool all) {
    printFacts(project);
    if (auto const drawing = timelineDrawing(project, columns()); !drawing.empty())
        terminal::say("\n{}\n", terminal::Lines{drawing});
    printList("clips", project.timeline.clips, all);
    printList("zooms", project.zoomEvents, all);
    printListIfAny("overlays", project.overlays, all);
    printListIfAny("captions", project.captions.cues, all);
    printListIfAny("silences", project.silences, all);
    printListIfAny("sound", project.audioTracks, all);
    printListIfAny("scenes", project.layoutCues, all);
}

}

void addInfo(CLI::App& app) {
    struct Options {
        std::string package;
        bool all = false;
        bool asJSON = false;
    };
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("info", "Shows what a project holds, with a drawing of its timeline");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_flag("--all", options->all, "every item of long lists");
    command->add_flag("--json", options->asJSON, "print the whole document");
    command->callback([options] {
        auto const project = openProject(options->package).project;
        if (options->asJSON)
            terminal::sayJSON(encodeProject(project));
        else
            printOutline(project, options->all);
    });
}

}
