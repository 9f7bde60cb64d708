#pragma once

#include <filesystem>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// The sound of a click: a tick, a breath of noise and a soft thump, 70 ms in all, with a peak of 0.6.
class ClickSound {
public:
    /// 3,360 samples; made once.
    static std::vector<float> const& samples();

    /// Lays the sound into `folder` as "click-sound-v1.caf", for whoever plays files, unless it is there. Throws
    /// `MediaError` where it cannot be written.
    static std::filesystem::path ensureFile(std::filesystem::path const& folder);
};

}
