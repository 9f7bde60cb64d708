#pragma once

#include <TavaroVoice/Speaking/Speaker.h>

#include <optional>
#include <span>

namespace tavaro {

inline constexpr double lineLoudness = -16; // LUFS, of each line by itself
inline constexpr double linePeak = -1.5;    // dBTP at most; half a decibel is left to the film's encoder

/// A line as all engines give it: at one loudness, with nothing clipped, and without the silence that some put before
/// and behind it; the words' times are those of what is left. Speech that can hardly be made so loud (a shout beside a
/// whisper) comes as near as its peaks let it. Throws `VoiceError::Kind::noSound` where nothing is heard.
Speech evened(Speech speech);

/// Loudness in LUFS of samples at 48 kHz, as heard from both sides; also of less than the 0.4 s that the standard
/// needs: those are measured as if they went on. None of silence.
std::optional<double> speechLoudness(std::span<float const> samples);

}
