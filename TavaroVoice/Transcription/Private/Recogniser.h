#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroVoice/Transcription/HeardWord.h>

#include <stop_token>
#include <vector>

namespace tavaro {

/// Engines hear this many samples a second.
inline constexpr int speechRate = 16'000;

/// The engine broke down over a piece of sound: it crashed, hung, or said nothing that makes sense. Another try may
/// work.
class RecogniserLost : public Error {
public:
    using Error::Error;
};

/// An engine that hears words. One thread at a time.
class Recogniser {
public:
    Recogniser() = default;
    Recogniser(Recogniser const&) = delete;
    Recogniser& operator=(Recogniser const&) = delete;
    virtual ~Recogniser();

    /// The words of a piece at `speechRate`, in time order, inside of it. Throws `RecogniserLost`, and `VoiceError`:
    /// `cancelled` when a stop is requested, others where no try will work.
    virtual std::vector<HeardWord> hear(MonoSound const& piece, std::stop_token const& stop) = 0;
};

}
