#include <Tavaro/Model/Operations/VoiceoverOperations.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Private/EditedProject.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Script/ScriptPlan.h>

#include <fmt/format.h>

namespace tavaro::operations {

namespace {

constexpr std::size_t longestName = 60; // characters
constexpr double endTolerance = 0.01;   // lengths are shown in hundredths

[[noreturn]] void fail(std::string const& sentence) {
    throw OperationError(OperationError::Kind::notPossible, sentence);
}

std::string nameOf(SetScript const& setting) {
    return setting.file ? fmt::format("“{}”", excerpt(*setting.file)) : "This text";
}

void expectFilm(DemoProject const& project) {
    if (!(project.duration() > 0)) fail("The video shows nothing yet, so there is nothing to narrate.");
}

std::vector<ScriptLine> linesOf(SetScript const& setting) {
    try {
        return readScript(setting.script);
    } catch (ScriptTextError const& error) {
        throw ScriptTextError(error.kind, fmt::format("{} cannot be the script: {}", nameOf(setting), error.what()));
    }
}

/// Takes the lines, and says how long they are.
std::string take(DemoProject& project, std::vector<ScriptLine> const& lines, std::string_view how) {
    project.voiceover = plannedScript(project.voiceover.value_or(VoiceoverPlan{}), lines);
    double spoken = 0, end = 0;
    for (auto const& segment : project.voiceover->segments) {
        spoken += segment.duration();
        end = segment.end();
    }
    auto const summary =
        fmt::format("{} a script of {}, {} spoken", how, counted(lines.size(), "line"), shownTime(spoken));
    if (end <= project.duration() + endTolerance) return summary;
    return fmt::format("{}; its last line goes on {:.1f} s past the end of the video", summary,
                       end - project.duration());
}

}

std::string DraftScript::nameProblem(std::string const& name) {
    if (lengthOf(name) <= longestName) return "";
    return fmt::format("a product's name has {} characters at most", longestName);
}

std::string apply(DemoProject& project, DraftScript const& drafting) {
    expectFilm(project);
    std::vector<ScriptLine> lines;
    for (auto const& beat : AutoDirectorScript{drafting.productName, drafting.style}.beats(project))
        lines.push_back({beat.time, beat.text});
    return take(project, lines, "Drafted");
}

std::string apply(DemoProject& project, SetScript const& setting) {
    expectFilm(project);
    auto const lines = timedLines(linesOf(setting), project.voiceover, project.duration());
    for (auto const& line : lines) {
        if (line.time.value_or(0) <= project.duration() + endTolerance) continue;
        fail(fmt::format("{} cannot be the script: “{}” is to begin at {}, but the video ends at {}.", nameOf(setting),
                         excerpt(line.text, 40), shownTime(*line.time), shownTime(project.duration())));
    }
    return take(project, lines, "Took");
}

}
