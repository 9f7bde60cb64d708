#pragma once

#include <Tavaro/Agents/Private/ToolArguments.h>
#include <Tavaro/Model/Operations/Operation.h>

#include <TavaroCore/Direction/PolishOptions.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroMCP/Protocol/MCPToolError.h>

#include <array>
#include <string>
#include <string_view>
#include <variant>

namespace tavaro {

struct DemoProject;
struct EditReport;
struct SpokenLines;

enum class ActionName {
    autoPolish,
    transcribe,
    captionsFromTranscript,
    removeFillers,
    tightenPauses,
    deleteWords,
    removeSilence,
    speedUpTyping,
    hideSecrets,
    draftVoiceoverScript,
    generateVoiceover,
};

constexpr std::array<std::string_view, 11> namesOf(ActionName) {
    return {
        "auto_polish",       "transcribe",     "captions_from_transcript", "remove_fillers", "tighten_pauses",
        "delete_words",      "remove_silence", "speed_up_typing",          "hide_secrets",   "draft_voiceover_script",
        "generate_voiceover"};
}

/// One of the features that an agent starts with a word.
struct ProjectAction {
    /// Voices that speak beside the queue.
    struct Voiceover {
        std::string voice; // empty: the plan's, or the best there is
    };
    /// Words of what is said, heard beside the queue.
    struct Transcription {
        std::string locale; // empty: the user's
    };
    /// What the recording shows, read beside the queue.
    struct PrivacyScan {};

    ActionName name = ActionName::autoPolish;
    std::variant<PolishOptions, Operation, Voiceover, Transcription, PrivacyScan> work;
};

/// Throws `MCPToolError`, also for what the action needs and the project does not have.
ProjectAction projectAction(ToolArguments const& arguments, DemoProject const& project);

/// Why lines of a narration were not spoken: what stopped the others, or else what the first of them failed of.
MCPToolError unspokenLines(SpokenLines const& lines);

/// What an action of one operation did to the project as it was, as a sentence.
std::string actionSummary(ProjectAction const& action, DemoProject const& before, EditReport const& report);

}
