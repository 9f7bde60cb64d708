#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace tavaro {

/// What one of the streams of a take shows, or lets hear. A take has at most one of each.
enum class StreamRole { screen, camera, microphone, systemSound };

constexpr std::array<std::string_view, 4> namesOf(StreamRole) {
    return {"screen", "camera", "microphone", "systemSound"};
}

/// What a sentence calls it, after “the”.
constexpr std::string_view spokenName(StreamRole role) {
    constexpr std::array<std::string_view, 4> names{"screen", "camera", "microphone", "system's sound"};
    return names[static_cast<std::size_t>(role)];
}

constexpr bool isSound(StreamRole role) { return role == StreamRole::microphone || role == StreamRole::systemSound; }

}
