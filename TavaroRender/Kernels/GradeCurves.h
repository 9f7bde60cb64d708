#pragma once

#include <array>
#include <optional>
#include <vector>

#include <TavaroRender/Kernels/Vectors.h>

namespace tavaro {

struct CameraUniforms;

/// The steps of a grade that treat each channel alone, as tables. Made once for a grade and kept while it stays.
class GradeCurves {
public:
    static constexpr int stepsPerUnit = 2048;
    static constexpr float highest = 1.125f; // sharpening overshoots white a little

    void prepare(CameraUniforms const& uniforms, bool hasLUT);

    /// True where the light is not changed: a channel is its contrast and lift alone, and needs no table.
    bool areStraight() const { return areStraight_; }

    /// False for a grade so steep that lines between the entries would miss its curve: then only the formula will do.
    bool areExact() const { return areExact_; }

    /// Value and, next to it, the one after, for channel 0…2 at `index` ÷ `stepsPerUnit`.
    float const* channel(int c) const { return curves_[static_cast<std::size_t>(c)].data(); }

private:
    struct Key {
        Float4 grade0;
        Float4 grade1;
        bool hasLUT = false;
        bool operator==(Key const&) const = default;
    };

    bool fill(CameraUniforms const& uniforms, int channel, float gain, float allowedError);

    std::optional<Key> key_;
    std::array<std::vector<float>, 3> curves_;
    bool areStraight_ = true;
    bool areExact_ = true;
};

}
