#pragma once

#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroRender/Layers/Private/LayerSpec.h>

namespace tavaro {

/// The caption as it is at output time `at`: which of its words show and which is being spoken.
LayerSpec::Caption spokenCaption(CaptionTrack const& track, CaptionCue const& cue, double at);

}
