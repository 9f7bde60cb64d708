#pragma once

#include <Tavaro/Model/Jobs/Job.h>

#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroCore/Captions/Transcript.h>
#include <TavaroVoice/Transcription/OnDeviceTranscriber.h>
#include <TavaroVoice/Transcription/TranscriptionEngines.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// How a project's speech becomes text; what is not said is as it is best.
struct TranscriptionChoices {
    std::string locale; // as the user writes it; empty: that of the user
    std::string engine; // an engine's id; empty: the best that is ready
    AudioRole track = AudioRole::microphone;
};

struct TranscriptionRequest {
    std::vector<SpokenSound> sounds;
    TranscriptionChoices choices;
    EnginePlaces places;
};

/// The sounds of the tracks of that role, each once and whole, however the film is cut; with the second of the
/// recording at which it begins, from where its clips are beside the picture.
std::vector<SpokenSound> spokenSounds(DemoProject const& project, ProjectPackage const& package, AudioRole role);

/// Words as they come. Each report is a stage of its own, so none is left out.
struct TranscriptionProgress {
    std::size_t stage = 0;
    double seconds = 0; // of sound that were heard
    double total = 0;   // 0 where the files do not tell
    std::vector<TranscriptWord> words;
};

struct MadeTranscript {
    Transcript transcript;
    TranscriptionEngine engine;
};

/// The name of the step in a project's history.
inline constexpr char const* transcriptionStep = "Transcribe";

/// Hears all of it beside the main queue. The document is not touched: who takes the transcript sets it, and all other
/// edits that were made meanwhile stay, since words have the recording's times. Fails with `VoiceError`, also where
/// nobody speaks.
Job<MadeTranscript, TranscriptionProgress> transcriptionJob(MainQueue& queue, TranscriptionRequest request);

/// Takes it into the document.
void keepTranscript(DemoProject& project, Transcript const& transcript);

}
