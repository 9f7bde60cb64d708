#include <TavaroCore/Style/CursorSettings.h>

#include <algorithm>

namespace tavaro {

void settleAfterReading(CursorSettings& settings) {
    for (auto* value : {&settings.smoothing, &settings.motionBlur, &settings.clickSoundVolume}) {
        *value = std::clamp(*value, 0.0, 1.0);
    }
}

}
