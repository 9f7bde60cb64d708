#pragma once

#include <string_view>

/// What a request to the application asks for.
namespace tavaro::control {

inline constexpr std::string_view toggleRecording = "toggle_recording";

}
