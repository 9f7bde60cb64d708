#pragma once

#include <Tavaro/Model/Recording/RecordingJob.h>

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

inline constexpr int longestCountdown = 60; // seconds

/// A source as preferences keep it: "display:display-1", "window:4512", "application:Firefox",
/// "area:10,20,640,360;16:9;display-1".
std::string sourceText(CaptureSource const& source);
/// None for a text that is no source's.
std::optional<CaptureSource> sourceOfText(std::string_view text);

/// The recording that the user has chosen: what, with which sounds, which camera and which keys, after which
/// countdown. What is not there any more is found out when it begins.
RecordingRequest chosenRecording(Preferences& preferences);

}
