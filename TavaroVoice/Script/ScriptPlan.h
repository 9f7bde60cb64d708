#pragma once

#include <TavaroVoice/Script/ScriptText.h>

#include <TavaroCore/Voice/VoiceoverPlan.h>

#include <optional>
#include <vector>

namespace tavaro {

/// The plan with these lines in place of its own. A line whose text it has already stays what it is, with its audio;
/// others are new, without any. A line with a time is pinned to it, and begins later only where the line before is
/// still spoken; one without follows the line before.
VoiceoverPlan plannedScript(VoiceoverPlan plan, std::vector<ScriptLine> const& lines);

/// Lines that have no times at all, at those of the plan where it has as many; otherwise spread over the film by their
/// length, as far as they fit into it.
std::vector<ScriptLine> timedLines(std::vector<ScriptLine> lines, std::optional<VoiceoverPlan> const& plan,
                                   double duration);

/// The plan's lines, each with the time that it is pinned to, or else begins at.
std::vector<ScriptLine> linesOf(VoiceoverPlan const& plan);

}
