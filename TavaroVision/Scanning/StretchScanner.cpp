#include <TavaroVision/Scanning/Private/StretchScanner.h>

#include <TavaroVision/Scanning/Private/ScreenLines.h>

#include <iterator>
#include <utility>

namespace tavaro {

void StretchScanner::show(GrayView const& picture, double time) {
    if (!scanner_ || picture.width != width_ || picture.height != height_) {
        if (scanner_) findings_ = all(scanner_->finish(time));
        scanner_.emplace(tools_, picture.width, picture.height);
        width_ = picture.width;
        height_ = picture.height;
    }
    scanner_->show(picture, time);
}

std::size_t StretchScanner::found() const { return findings_.size() + (scanner_ ? scanner_->found() : 0); }

std::vector<ScreenFinding> StretchScanner::finish(double end) {
    return all(scanner_ ? scanner_->finish(end) : std::vector<ScreenFinding>{});
}

std::vector<ScreenFinding> StretchScanner::stop(double end) {
    return all(scanner_ ? scanner_->stop(end) : std::vector<ScreenFinding>{});
}

std::vector<ScreenFinding> StretchScanner::all(std::vector<ScreenFinding> last) {
    auto findings = std::exchange(findings_, {});
    findings.insert(findings.end(), std::move_iterator(last.begin()), std::move_iterator(last.end()));
    return findings;
}

}
