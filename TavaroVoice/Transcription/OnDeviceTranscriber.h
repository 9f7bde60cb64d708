#pragma once

#include <TavaroCore/Captions/Transcript.h>
#include <TavaroVoice/Transcription/TranscriptionEngines.h>

#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

/// A sound in which somebody speaks, and where it is in the recording.
struct SpokenSound {
    std::filesystem::path file;
    double offset = 0; // second of the recording at which the sound begins; may be before it

    bool operator==(SpokenSound const&) const = default;
};

/// How far a transcription is.
struct TranscriptionState {
    double seconds = 0;                // of sound that were heard
    double total = 0;                  // 0 where the files do not tell
    std::vector<TranscriptWord> words; // new since the last report
};

/// Who watches a transcription. Called on any thread, one at a time.
struct TranscriptionWatch {
    std::function<void(TranscriptionState const&)> progress;
    std::function<void(std::string const&)> remark;
    std::stop_token stop;
};

/// Turns speech into timed words, on this machine. Sounds of any length: they are cut into pieces where nobody speaks,
/// several of which are heard at once, in processes of their own, and memory is bounded by the pieces. A piece over
/// which the engine breaks down twice is left out with a remark; its sound counts as unrecognised.
class OnDeviceTranscriber {
public:
    explicit OnDeviceTranscriber(EngineWork work) : work_(std::move(work)) {}

    /// In the order in which sounds count: where two have words at the same time, those of the first are taken. The
    /// words' times are the recording's. Nothing may be heard. Throws `VoiceError`.
    Transcript transcribe(std::vector<SpokenSound> const& sounds, std::string const& locale,
                          TranscriptionWatch const& watch = {}) const;

private:
    EngineWork const work_;
};

}
