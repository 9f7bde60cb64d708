#include <TavaroVoice/Errors/VoiceError.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

namespace tavaro {

VoiceError::~VoiceError() = default;

VoiceError noSuchVoice(std::string_view id) {
    return {VoiceError::Kind::noVoice,
            fmt::format("There is no voice “{}” here; `tavaro voices` lists those that there are.", excerpt(id))};
}

VoiceError cancelledSpeech() { return {VoiceError::Kind::cancelled, "The narration was cancelled."}; }

}
