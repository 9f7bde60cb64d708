#include <Tavaro/Model/Recording/Private/SoundWatch.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

namespace {

constexpr double suspiciousSilence = 5; // seconds

/// A machine may well play nothing. A microphone that works has some noise.
bool isSuspicious(SoundState const& sound) {
    bool const hasToSound = sound.role == StreamRole::microphone || !sound.awaited.empty();
    return hasToSound && sound.silentSeconds >= suspiciousSilence;
}

std::string silenceSentence(SoundState const& sound) {
    if (!sound.awaited.empty())
        return fmt::format("“{}” has not played anything for {:.0f} seconds. `tavaro sources` lists what plays.",
                           excerpt(sound.awaited), suspiciousSilence);
    return fmt::format("The {} has given nothing but silence for {:.0f} seconds. Is it muted?", spokenName(sound.role),
                       suspiciousSilence);
}

}

void SoundWatch::look(std::vector<SoundState> const& sounds, FunctionRef<void(std::string const&)> tell) {
    for (auto const& sound : sounds) {
        auto& told = told_[sound.role];
        auto const name = spokenName(sound.role);
        if (std::exchange(told.isAway, sound.isAway) != sound.isAway)
            tell(sound.isAway ? fmt::format("No sound comes from the {}; the take is silent until it does.", name)
                              : fmt::format("Sound comes from the {} again.", name));
        bool const isSilent = isSuspicious(sound);
        if (!std::exchange(told.isSilent, isSilent) && isSilent) tell(silenceSentence(sound));
    }
}

}
