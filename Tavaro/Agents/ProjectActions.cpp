#include <Tavaro/Agents/Private/ProjectActions.h>

#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Editing/TypingSpeed.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Voiceover/SpokenLines.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

ActionName nameIn(ToolArguments const& arguments) {
    auto const given = arguments.requiredText("action");
    if (auto const name = enumNamed<ActionName>(given)) return *name;
    refuseArguments(fmt::format("Unknown action \"{}\".", excerpt(given)));
}

PolishOptions polishOptions(ToolArguments const& given) {
    PolishOptions options;
    for (auto const& [name, value] : given.all()) {
        bool isKnown = false;
        forEachField<PolishOptions>([&, &key = name, &flag = value](auto const& field) {
            auto const* const chosen = field.name == key ? flag.template as<bool>() : nullptr;
            if (!chosen) return;
            options.*field.member = *chosen;
            isKnown = true;
        });
        if (!isKnown) refuseArguments("auto_polish options must be booleans named as in the tool description.");
    }
    return options;
}

std::vector<TranscriptWord> const& wordsOf(DemoProject const& project) {
    if (!project.transcript) refuseArguments("This project has no transcript yet. Run the transcribe action first.");
    return (*project.transcript)->words;
}

operations::CaptionsFromTranscript captions(ToolArguments const& options) {
    operations::CaptionsFromTranscript making;
    making.maxCharacters = options.integer("max_characters", {1, 1000}).value_or(making.maxCharacters);
    return making;
}

operations::TightenPauses tightening(ToolArguments const& options) {
    operations::TightenPauses tightening;
    tightening.threshold = options.number("max_pause", {0, 3600}).value_or(tightening.threshold);
    tightening.keep = std::min(tightening.keep, tightening.threshold);
    return tightening;
}

operations::DeleteWords deletion(ToolArguments const& options, std::vector<TranscriptWord> const& words) {
    if (words.empty()) refuseArguments("The transcript has no words.");
    auto const last = words.size() - 1;
    auto const sentence = fmt::format("from_word and to_word must be indices 0…{}.", last);
    auto const index = [&](std::string_view name) {
        auto const* const value = options.find(name);
        auto const* const number = value ? value->as<double>() : nullptr;
        auto const* const whole = value ? value->as<std::int64_t>() : nullptr;
        double const given = number ? *number : whole ? static_cast<double>(*whole) : -1;
        bool const isIndex = given >= 0 && given <= static_cast<double>(last) && std::trunc(given) == given;
        if (!isIndex) refuseArguments(sentence);
        return static_cast<std::size_t>(given);
    };
    auto const first = index("from_word"), final = index("to_word");
    if (first > final) refuseArguments("to_word must not be before from_word.");
    return {.first = first, .last = final};
}

operations::SpeedUpTyping typing(ToolArguments const& options) {
    operations::SpeedUpTyping change;
    change.rate = options.number("rate", {1, fastestRate}).value_or(change.rate);
    return change;
}

ProjectAction::Voiceover voiceover(ToolArguments const& options, DemoProject const& project) {
    if (!project.voiceover || project.voiceover->segments.empty())
        throw MCPToolError(MCPErrorCode::failed, "Run draft_voiceover_script first.");
    return {options.text("voice").value_or("")};
}

operations::DraftScript draft(ToolArguments const& options) {
    operations::DraftScript drafting;
    drafting.productName = options.text("product_name").value_or("");
    auto const problem = operations::DraftScript::nameProblem(drafting.productName);
    if (!problem.empty()) refuseArguments(fmt::format("product_name: {}.", problem));
    drafting.style = options.oneOf<AutoDirectorScript::Style>("style").value_or(drafting.style);
    return drafting;
}

/// Who says what to look for would else believe that only this was.
ProjectAction::PrivacyScan privacyScan(ToolArguments const& options) {
    if (!options.all().empty())
        refuseArguments("hide_secrets takes no options: what it looks for is the project's redactionSettings.");
    return {};
}

decltype(ProjectAction::work) workOf(ActionName name, ToolArguments const& options, DemoProject const& project) {
    switch (name) {
    case ActionName::autoPolish: return polishOptions(options);
    case ActionName::transcribe: return ProjectAction::Transcription{options.text("locale").value_or("")};
    case ActionName::captionsFromTranscript: wordsOf(project); return Operation(captions(options));
    case ActionName::removeFillers: wordsOf(project); return Operation(operations::RemoveFillers{});
    case ActionName::tightenPauses: wordsOf(project); return Operation(tightening(options));
    case ActionName::deleteWords: return Operation(deletion(options, wordsOf(project)));
    case ActionName::removeSilence: return Operation(operations::RemoveSilence{});
    case ActionName::speedUpTyping: return Operation(typing(options));
    case ActionName::hideSecrets: return privacyScan(options);
    case ActionName::draftVoiceoverScript: return Operation(draft(options));
    case ActionName::generateVoiceover: break;
    }
    return voiceover(options, project);
}

VoiceError reasonOf(SpokenLines const& lines) {
    using enum VoiceError::Kind;
    if (lines.isCancelled) return {cancelled, "The voiceover was cancelled."};
    auto reason = lines.unspoken.begin();
    if (lines.stopped) reason = std::ranges::find(lines.unspoken, *lines.stopped, &UnspokenLine::sentence);
    if (reason != lines.unspoken.end()) return {reason->kind, reason->sentence};
    return {failed, lines.stopped.value_or("Nobody spoke them.")};
}

}

ProjectAction projectAction(ToolArguments const& arguments, DemoProject const& project) {
    static JSONValue::Object const none;
    auto const name = nameIn(arguments);
    auto const options = arguments.object("options").value_or(ToolArguments(none));
    return {.name = name, .work = workOf(name, options, project)};
}

MCPToolError unspokenLines(SpokenLines const& lines) {
    auto const reason = reasonOf(lines);
    auto const count = lines.unspoken.size() + lines.notBegun.size();
    auto sentence =
        fmt::format("{} of {} lines were not spoken: {}", count, lines.spoken.size() + count, reason.what());
    if (!sentence.ends_with('.')) sentence += '.';
    if (!lines.spoken.empty()) sentence += " What was spoken is kept.";
    return {reason.kind == VoiceError::Kind::noKey ? MCPErrorCode::needsVoiceKey : MCPErrorCode::failed, sentence};
}

std::string actionSummary(ProjectAction const& action, DemoProject const& before, EditReport const& report) {
    double const seconds = report.durationBefore - report.duration;
    switch (action.name) {
    case ActionName::removeFillers: return fmt::format("Removed {:.2f} s of filler words.", seconds);
    case ActionName::tightenPauses: return fmt::format("Tightened pauses: {:.2f} s shorter.", seconds);
    case ActionName::speedUpTyping: {
        auto sped = before;
        auto const rate = std::get<operations::SpeedUpTyping>(std::get<Operation>(action.work)).rate;
        return fmt::format("Sped up {} typing stretches.", speedUpTyping(sped, rate).count);
    }
    default: return report.summary + ".";
    }
}

}
