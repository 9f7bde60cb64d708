#pragma once

#include <TavaroCapture/Sound/Private/SampleClock.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace tavaro {

/// Makes sound on the media clock of what a device captured on its own: resampled by the millionths by which the two
/// clocks differ, so that it neither drifts nor jumps. Where samples were lost the next block begins later by as much;
/// where a device repeated some, they are left out. Blocks never overlap. One thread.
///
///     device   |s0 s1 s2 … |s960 …  |           (lost)    |s1920 …
///     readings      ·    ·     ·    ·                   ·    ·
///     blocks   |t0 … , 48,000 a second  |                |t1 …
class ClockedSound {
public:
    explicit ClockedSound(std::function<void(SoundBlock const&)> block) : block_(std::move(block)) {}

    /// A reading for the samples added so far or to come, counted from the first.
    void noteTime(std::int64_t sample, double moment) { clock_.note(static_cast<double>(sample), moment); }
    /// Samples that follow those before. Nothing is handed on until their time is known.
    void append(std::span<StereoSample const> samples);
    /// So many samples that follow could not be had; they are silent.
    void appendHole(std::size_t count);

    std::int64_t samplesAdded() const { return first_ + std::ssize(held_); }

private:
    void produce();
    bool begin();
    void jump(double error);
    std::size_t ready() const;
    void adjustStride();

    std::function<void(SoundBlock const&)> const block_;
    SampleClock clock_;
    std::vector<StereoSample> held_; // of the device, from `first_` on
    std::int64_t first_ = 0;
    double position_ = 0;        // in the device's samples, of the next one to be made
    std::optional<double> next_; // its moment; none before the first
    double stride_ = 1;          // of the device's samples for each that is made
};

}
