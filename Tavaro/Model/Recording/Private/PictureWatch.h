#pragma once

#include <TavaroCapture/Sources/StreamRole.h>

#include <optional>
#include <string>

namespace tavaro {

/// Tells what becomes of the camera or the screen of a take while it goes on, so that it can still be helped: each
/// thing once, as soon as it is so.
class PictureWatch {
public:
    explicit PictureWatch(StreamRole role) : role_(role) {}

    /// A sentence, where something changed.
    std::optional<std::string> look(bool isAway);

private:
    StreamRole const role_;
    bool isAway_ = false;
};

}
