#include <Tavaro/Model/Recording/Private/CameraWatch.h>

#include <utility>

namespace tavaro {

std::optional<std::string> CameraWatch::look(bool isAway) {
    if (std::exchange(isAway_, isAway) == isAway) return std::nullopt;
    return isAway ? "No pictures come from the camera; its last one stays until they do."
                  : "Pictures come from the camera again.";
}

}
