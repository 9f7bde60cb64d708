#pragma once

#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroCore/Camera/CameraDirection.h>
#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Overlays/Overlay.h>
#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Timeline/Timeline.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroCore/Zoom/ZoomEvent.h>

#include <string>
#include <string_view>

namespace tavaro {

/// What an item is called where it is listed or read out: "Zoom 1.8×", "Caption “Open the file”".
std::string titleOf(VideoClip const& clip);
std::string titleOf(ZoomEvent const& zoom);
std::string titleOf(Overlay const& overlay);
std::string titleOf(SilenceSpan const& silence);
std::string titleOf(CaptionCue const& caption);
std::string titleOf(LayoutCue const& cue);
std::string titleOf(AudioClip const& sound);
std::string titleOf(VoiceoverSegment const& segment);
std::string titleOf(CameraMove const& move);
std::string titleOf(AudioTrack const& track);
std::string titleOf(RedactionTrack const& redaction);

/// A name of the document's in words: "loupeSize" as "Loupe Size", "hevc" as "Hevc".
std::string inWords(std::string_view name);

}
