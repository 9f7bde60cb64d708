#include <Tavaro/Model/Privacy/FilmCheck.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroPlatform/Folders/FindingKeyFile.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double betweenReadings = 0.08; // seconds: what a film shows for five of its frames is seen

bool isInProject(ScreenFinding const& finding, DemoProject const* project, bool isHidden) {
    return project && std::ranges::any_of(*project->redactions, [&](RedactionTrack const& track) {
               return track.isEnabled == isHidden && track.kind == finding.kind && track.textHash == finding.textHash;
           });
}

}

PrivacyScanRequest filmCheckRequest(std::filesystem::path const& film, RedactionSettings const& settings) {
    return {.recordings = {{film.filename().string(), film, 0, {}}},
            .settings = settings,
            .extent = ScanExtent::everything,
            .key = ensureFindingKey(),
            .interval = betweenReadings};
}

std::vector<LegibleText> legibleTexts(MadePrivacyScan const& made, DemoProject const* project) {
    std::vector<LegibleText> texts;
    for (auto const& film : made.recordings) {
        for (auto const& finding : film.outcome.findings) {
            bool const isHidden = isInProject(finding, project, true);
            texts.push_back({.kind = finding.kind,
                             .masked = finding.masked,
                             .start = finding.start,
                             .end = finding.end,
                             .isHiddenInProject = isHidden,
                             .isRejectedInProject = !isHidden && isInProject(finding, project, false)});
        }
    }
    std::ranges::stable_sort(texts, {}, &LegibleText::start);
    return texts;
}

std::size_t countOfLegible(std::vector<LegibleText> const& texts) {
    return static_cast<std::size_t>(std::ranges::count(texts, false, &LegibleText::isRejectedInProject));
}

std::string filmCheckSentence(std::vector<LegibleText> const& texts) {
    auto const count = countOfLegible(texts);
    if (count == 0) return "Nothing private can be read in it.";
    return fmt::format("{} private text{} can be read in it.", count, count == 1 ? "" : "s");
}

std::string remarkOn(LegibleText const& text) {
    if (text.isHiddenInProject) return "hidden in the project, and legible all the same";
    return text.isRejectedInProject ? "rejected in the project" : "";
}

}
