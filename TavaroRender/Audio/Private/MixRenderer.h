#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroRender/Audio/Private/MixPlan.h>

namespace tavaro {

/// Makes the samples of a mix. Going on from where the last call ended costs the decoding of what is heard; memory and
/// the cost of a jump do not grow with the length of the output. The sum of the tracks passes a true-peak limiter at
/// −1 dB, which leaves alone what is below. The samples do not depend on how they are asked for, but for the moments
/// after a jump into sound that plays at another speed, or that the limiter was holding down. One thread at a time.
class MixRenderer {
public:
    /// `files` are those of the plan's sources, in their order.
    MixRenderer(MixPlan plan, std::vector<std::filesystem::path> files);
    MixRenderer(MixRenderer&&) noexcept;
    MixRenderer& operator=(MixRenderer&&) noexcept;
    ~MixRenderer();

    MixPlan const& plan() const;

    /// Output samples from `position` on; silence outside the output. Throws `MediaError` as `AudioReader` does.
    void render(std::int64_t position, std::span<StereoSample> samples);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
