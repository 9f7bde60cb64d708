#include <Tavaro/Model/Recording/Private/PictureWatch.h>

#include <fmt/format.h>
#include <utility>

namespace tavaro {

std::optional<std::string> PictureWatch::look(bool isAway) {
    if (std::exchange(isAway_, isAway) == isAway) return std::nullopt;
    auto const name = spokenName(role_);
    return isAway ? fmt::format("No pictures come from the {}; its last one stays until they do.", name)
                  : fmt::format("Pictures come from the {} again.", name);
}

}
