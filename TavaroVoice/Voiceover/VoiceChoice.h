#pragma once

#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroVoice/ElevenLabs/ElevenLabsVoices.h>
#include <TavaroVoice/Speaking/Speaker.h>

#include <functional>
#include <string_view>
#include <vector>

namespace tavaro {

/// What there is to choose from.
struct OfferedVoices {
    std::vector<Voice> voices; // of this machine and of the service
    /// For the service; may ask the user to unlock it, and throws `VoiceError` where nobody gets it.
    std::function<bool()> hasKey = [] { return false; };
    std::string_view serviceVoice = defaultElevenVoice; // the service's own choice, and its model
    std::string_view serviceModel = defaultElevenModel;
};

/// The plan's settings with the voice that speaks: the one asked for by its id, or by a name that one voice alone has;
/// else the plan's own; else, without a key, the clearest voice of this machine, and with one the service's choice. An
/// id that is not offered is taken at its word, as a service has more voices than it lists; whoever speaks says then
/// what is wrong. Without any voice at all the service's is chosen, so that it is the key that is asked for.
VoiceSettings chosenVoice(VoiceSettings plan, std::string_view asked, OfferedVoices const& offered);

}
