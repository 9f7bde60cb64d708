#include <Tavaro/Model/Operations/FindingOperations.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <optional>
#include <set>

namespace tavaro::operations {

namespace {

[[noreturn]] void fail(std::string const& sentence) {
    throw OperationError(OperationError::Kind::notPossible, sentence);
}

bool isFound(RedactionTrack const& track) { return !track.textHash.empty(); }

std::string upperCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char each) { return std::toupper(each); });
    return text;
}

/// The only one whose id begins so.
std::size_t trackNamed(std::vector<RedactionTrack> const& tracks, std::string const& name) {
    auto const beginning = upperCase(name);
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        if (beginning.empty() || !tracks[i].id.text().starts_with(beginning)) continue;
        if (found) fail(fmt::format("Several findings have an id that begins with “{}”.", excerpt(name)));
        found = i;
    }
    if (!found) fail(fmt::format("There is no finding “{}”.", excerpt(name)));
    return *found;
}

/// Those that are named, in the order of the document.
std::set<std::size_t> namedTracks(std::vector<RedactionTrack> const& tracks, std::vector<std::string> const& names) {
    if (names.empty()) fail("Which findings is missing: ids, kinds or all.");
    std::set<std::size_t> found;
    for (auto const& name : names) {
        auto const kind = enumNamed<SensitiveKind>(name);
        if (!kind && name != "all") {
            found.insert(trackNamed(tracks, name));
            continue;
        }
        for (std::size_t i = 0; i < tracks.size(); ++i)
            if (isFound(tracks[i]) && (!kind || tracks[i].kind == *kind)) found.insert(i);
    }
    return found;
}

std::size_t decide(DemoProject& project, std::vector<std::string> const& names,
                   std::function<void(RedactionTrack&)> const& decision) {
    auto const named = namedTracks(*project.redactions, names);
    if (named.empty()) return 0;
    auto& tracks = project.redactions.edit();
    for (auto const index : named) decision(tracks[index]);
    return named.size();
}

NormalizedRect areaOf(DemoProject const& project, HideArea const& area) {
    auto const [width, height] = project.sourceSize;
    if (width <= 0 || height <= 0) fail("The size of the recording is not known, so no area of it can be hidden.");
    if (area.x >= static_cast<double>(width) || area.y >= static_cast<double>(height))
        fail(fmt::format("The area is outside of the recording, which has {} × {} pixels.", width, height));
    auto const across = static_cast<double>(width), down = static_cast<double>(height);
    double const right = std::min(area.x + area.width, across), bottom = std::min(area.y + area.height, down);
    return {area.x / across, area.y / down, (right - area.x) / across, (bottom - area.y) / down};
}

/// What a clip shows in the span, in seconds of its asset; none where it shows nothing then.
TimeRange shownBy(VideoClip const& clip, TimeRange const& span) {
    double const from = std::max(clip.start, span.start), to = std::min(clip.end(), span.end());
    double const start = clip.sourceStart + (from - clip.start) * clip.speed;
    return {start, std::max(to - from, 0.0) * clip.speed};
}

}

std::string apply(DemoProject& project, AcceptFindings const& acceptance) {
    auto const count = decide(project, acceptance.findings, [](RedactionTrack& track) {
        track.isEnabled = true;
        track.isAutomatic = false;
    });
    return fmt::format("Accepted {}", counted(count, "finding"));
}

std::string apply(DemoProject& project, RejectFindings const& rejection) {
    auto const count = decide(project, rejection.findings, [](RedactionTrack& track) { track.isEnabled = false; });
    return fmt::format("Rejected {}", counted(count, "finding"));
}

std::string apply(DemoProject& project, HideArea const& area) {
    TimeRange const span{area.start, area.end - area.start};
    expectSpan(project, span);
    auto const rect = areaOf(project, area);
    constexpr double together = 0.001; // seconds: a clip that goes on where the one before ended
    std::vector<RedactionTrack> made;
    for (auto const& clip : project.timeline.clips) {
        auto const shown = shownBy(clip, span);
        if (!(shown.duration > 0)) continue;
        bool const goesOn =
            !made.empty() && made.back().asset == clip.asset && std::abs(made.back().end - shown.start) < together;
        if (goesOn)
            made.back().end = shown.end();
        else
            made.push_back({.label = "Area",
                            .asset = clip.asset,
                            .start = shown.start,
                            .end = shown.end(),
                            .keyframes = {{shown.start, rect}},
                            .style = area.isBlurred ? RedactionStyle::blur : RedactionStyle::mask});
    }
    if (made.empty()) fail("The video shows no recording then.");
    auto& tracks = project.redactions.edit();
    tracks.insert(tracks.end(), made.begin(), made.end());
    return fmt::format("Hid an area at {}", shownSpan(span));
}

}
