#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <optional>
#include <span>
#include <vector>

namespace tavaro {

/// Calms a recorded pointer path without delaying it: an adaptive low-pass (Casiez, Roussel, Vogel: "1€ Filter", CHI
/// 2012) that runs forward and then backward. Slow jitter goes, quick moves stay quick.
class CursorSmoother {
public:
    /// `amount` is clamped to 0…1; within `clickPinWindow` seconds of a click the path bends back to what was recorded,
    /// and at the instant of a click it is exactly that.
    CursorSmoother(double amount, double clickPinWindow);

    double amount() const { return amount_; }
    double clickPinWindow() const { return clickPinWindow_; }

    /// Samples in ascending time. Only positions change; the first and last sample keep theirs. With amount 0, or fewer
    /// than three samples, the samples come back as they are.
    std::vector<CursorSample> smooth(std::span<CursorSample const> samples, std::span<ClickEvent const> clicks) const;

    /// The point of a path at a time, on a Catmull-Rom curve through its samples; held before the first and after the
    /// last; none when there are no samples. Logarithmic in the length of the path.
    static std::optional<UnitPoint2> position(std::vector<CursorSample> const& path, double at);

private:
    double amount_;
    double clickPinWindow_;
};

}
