#pragma once

#include <Tavaro/Model/Jobs/Job.h>

#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroVoice/Voiceover/SpokenLines.h>
#include <TavaroVoice/Voiceover/VoiceChoice.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// Who speaks. Both are called on threads of the job's own.
struct VoiceService {
    SpeakerSource speakers;
    std::function<OfferedVoices()> offered; // asks all engines what they have
};

struct VoiceoverRequest {
    VoiceoverPlan plan;               // as the document has it
    std::string voice = {};           // id or name; empty: the plan's, or the best there is (`chosenVoice`)
    std::optional<double> speed = {}; // else the plan's
    std::vector<UUID> only = {};      // these lines, whatever sound they have; else all that need it
    VoiceService service;
};

/// The voice that is to speak, among those.
VoiceSettings voiceOf(VoiceoverRequest const& request, OfferedVoices const& offered);

struct VoiceoverProgress {
    std::int64_t done = 0; // lines, with those that failed
    std::int64_t failed = 0;
    std::int64_t total = 0;
};

/// Lines with their sounds, which the package has already; the document has yet to take them in.
struct GeneratedVoiceover {
    SpokenLines lines;
    VoiceSettings before; // the plan's voice when it was begun
    VoiceSettings voice;  // that spoke; the document gets it
};

/// Says the lines of a narration beside the main queue. Lines that fail are part of the result, and a cancelled job has
/// one too, unless it is cancelled before it began: what was said is kept, since it may have been paid for. Throws
/// `VoiceError::Kind::noKey` where lines are to be paid for without a key.
Job<GeneratedVoiceover, VoiceoverProgress> voiceoverJob(MainQueue& queue, ProjectPackage const& package,
                                                        VoiceoverRequest request);

/// The name of the step in a project's history.
inline constexpr char const* voiceoverStep = "Generate Voiceover";

enum class LongLines { asThePlanSays, pushTheNext, holdTheFrame };
enum class VoiceoverCaptions { asTheyAre, made };

struct VoiceoverTaking {
    LongLines longLines = LongLines::asThePlanSays; // the plan remembers it
    VoiceoverCaptions captions = VoiceoverCaptions::asTheyAre;
};

/// All that becomes of a document by it, to be made as one step: lines that are still as they were spoken get their
/// sound, all lines their places, and captions are made where that is wanted. The document may have been edited since.
/// Where every line failed, it stays as it is, and keeps its voice.
void takeIn(DemoProject& project, ProjectPackage const& package, GeneratedVoiceover const& generated,
            VoiceoverTaking const& taking = {});

}
