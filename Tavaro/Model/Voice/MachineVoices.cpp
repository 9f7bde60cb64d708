#include <Tavaro/Model/Voice/MachineVoices.h>

#include <TavaroVoice/Voices/VoiceBox.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace tavaro {

namespace {

/// Without asking the service, which has more: those are taken at their ids.
OfferedVoices offered(std::shared_ptr<VoiceBox::Settings const> const& settings) {
    VoiceBox box(*settings);
    OfferedVoices offered{.voices = box.systemVoices(), .hasKey = [settings] { return VoiceBox(*settings).hasKey(); }};
    std::ranges::move(VoiceBox::builtInVoices(), std::back_inserter(offered.voices));
    return offered;
}

}

VoiceService machineVoices() {
    auto const settings = std::make_shared<VoiceBox::Settings const>(VoiceBox::Settings::ofThisUser());
    return {.speakers = [settings] { return std::make_unique<VoiceBox>(*settings); },
            .offered = [settings] { return offered(settings); }};
}

}
