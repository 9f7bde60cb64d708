#pragma once

#include <memory>
#include <optional>
#include <span>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// Loudness after EBU R 128.
class LoudnessMeter {
public:
    enum class Peaks { ignored, measured }; // measuring them takes most of the time

    explicit LoudnessMeter(Peaks peaks = Peaks::ignored);
    LoudnessMeter(LoudnessMeter&&) noexcept;
    LoudnessMeter& operator=(LoudnessMeter&&) noexcept;
    ~LoudnessMeter();

    void add(std::span<StereoSample const> samples);

    /// Integrated loudness in LUFS; none of silence, nor of less than 0.4 s.
    std::optional<double> integrated() const;
    /// True peak so far in dBTP; none of silence, or where it is not measured.
    std::optional<double> truePeak() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
