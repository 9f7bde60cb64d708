#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/AudioReader.h>

namespace tavaro {

using Sound = std::vector<StereoSample>;

/// A sine of that many hertz on both sides.
Sound tone(double seconds, double hertz, double amplitude = 0.5);
/// White noise; the same for the same seed.
Sound noise(double seconds, double amplitude, std::uint64_t seed = 1);
/// Like somebody speaking: syllables of harmonics with pauses between them.
Sound syllables(double seconds, double amplitude = 0.5);
/// Silence with a short tick at each of `positions`.
Sound ticks(double seconds, std::vector<std::int64_t> const& positions);

Sound sum(Sound a, Sound const& b);

/// An uncompressed file of floats.
void writeSound(std::filesystem::path const& file, Sound const& sound, int channels = 2);
/// All of a file from its time 0 on.
Sound soundOf(std::filesystem::path const& file);

/// Root of the mean square of both sides, in decibels of full scale; −200 for silence.
double level(std::span<StereoSample const> sound);
/// The same of one frequency alone.
double levelAt(std::span<StereoSample const> sound, double hertz);
/// The frequency that is loudest between 50 Hz and 4 kHz, to 2 Hz.
double pitch(std::span<StereoSample const> sound);
/// Largest magnitude of a sample.
double peak(std::span<StereoSample const> sound);
/// Largest step from one sample to the next.
double steepest(std::span<StereoSample const> sound);
/// How many samples later `b` is like `a`, −`reach` … `reach`.
int delay(std::span<StereoSample const> a, std::span<StereoSample const> b, int reach);
/// Where the magnitude has its peaks above `threshold`, at least a millisecond apart.
std::vector<std::int64_t> peaks(std::span<StereoSample const> sound, double threshold);

}
