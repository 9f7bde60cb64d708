#pragma once

#include <optional>
#include <string>

namespace tavaro {

/// Tells what becomes of the camera of a take while it goes on, so that it can still be helped: each thing once, as
/// soon as it is so.
class CameraWatch {
public:
    /// A sentence, where something changed.
    std::optional<std::string> look(bool isAway);

private:
    bool isAway_ = false;
};

}
