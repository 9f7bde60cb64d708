#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Audio/LoudnessMeter.h>
#include <TavaroMedia/Audio/ScratchSound.h>
#include <TavaroRender/Audio/Private/MixPlan.h>

namespace tavaro {

/// One run of the enhancer over a file. What the filters give lies in a nameless file until the loudness of the whole
/// is known; then it is written at its final level.
class Enhancement {
public:
    /// Told how much is done, 0…1; false stops the work.
    using Progress = std::function<bool(double)>;

    Enhancement(std::filesystem::path const& file, EnhancementSettings const& settings, Progress const& progress)
        : file_(file)
        , settings_(settings)
        , progress_(progress) {}

    /// False when it was stopped; then nothing is written.
    bool write(std::filesystem::path const& output);

private:
    enum class Outcome { done, stopped, notMono };

    /// Filters the file into `sound`, as one channel as long as both sides are the same.
    Outcome filter(int channels, ScratchSound& sound, LoudnessMeter& meter);
    bool finish(std::filesystem::path const& output, ScratchSound const& sound, int channels,
                LoudnessMeter const& meter);
    /// The file, written but not finished, and its loudness.
    struct Written {
        AudioFileWriter writer;
        LoudnessMeter meter;
    };
    /// None when it was stopped.
    std::optional<Written> writeWithGain(std::filesystem::path const& output, ScratchSound const& sound, int channels,
                                         double gainDecibels);
    bool report(double done) const { return !progress_ || progress_(done); }

    std::filesystem::path file_;
    EnhancementSettings settings_;
    Progress progress_;
};

}
