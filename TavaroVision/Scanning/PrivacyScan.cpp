#include <TavaroVision/Scanning/PrivacyScan.h>

#include <TavaroVision/Errors/VisionError.h>

namespace tavaro {

ScanOutcome scanMovie(ScanRequest const&, std::function<void(ScanProgress const&)> const&, std::stop_token const&) {
    throw VisionError(VisionError::Kind::noReader, "Text on the screen cannot be read yet.");
}

}
