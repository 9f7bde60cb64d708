#pragma once

#include <TavaroVision/Scanning/PrivacyScan.h>
#include <TavaroVision/Scanning/Private/ScreenScanner.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace tavaro {

/// Looks at the frames of a stretch of a recording as `ScreenScanner` does, whatever their sizes: those of a window
/// change with it. Each finding's places are parts of the frames that show them.
class StretchScanner {
public:
    explicit StretchScanner(ScanTools const& tools) : tools_(tools) {}

    void show(GrayView const& picture, double time);
    std::size_t found() const;
    std::optional<double> unreadSince() const { return scanner_ ? scanner_->unreadSince() : std::nullopt; }
    std::vector<ScreenFinding> finish(double end);
    std::vector<ScreenFinding> stop(double end);

private:
    std::vector<ScreenFinding> all(std::vector<ScreenFinding> last);

    ScanTools tools_;
    std::optional<ScreenScanner> scanner_; // for frames of the present size
    int width_ = 0;
    int height_ = 0;
    std::vector<ScreenFinding> findings_; // on frames of others
};

}
