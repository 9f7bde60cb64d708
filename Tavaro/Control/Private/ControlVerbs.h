#pragma once

#include <string_view>

/// What a request to the application asks for.
namespace tavaro::control {

inline constexpr std::string_view toggleRecording = "toggle_recording";
inline constexpr std::string_view handOver = "hand_over";
// Of one take.
inline constexpr std::string_view takeState = "take_state";
inline constexpr std::string_view pauseTake = "pause_take";
inline constexpr std::string_view stopTake = "stop_take";

}
