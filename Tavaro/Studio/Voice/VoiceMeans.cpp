#include <Tavaro/Studio/Voice/VoiceMeans.h>

#include <Tavaro/Model/Voice/MachineVoices.h>
#include <Tavaro/Studio/Playback/PulseOutput.h>

#include <TavaroPlatform/Folders/Folders.h>

namespace tavaro {

VoiceMeans VoiceMeans::ofThisMachine() {
    return {.service = machineVoices,
            .engines =
                [] {
                    Preferences preferences;
                    return EnginePlaces::usual(preferences);
                },
            .output = [] { return std::make_unique<PulseOutput>(); },
            .samples = folders::caches() / "Voices"};
}

}
