#include <Tavaro/Model/Recording/Private/SoundWatch.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

namespace {

constexpr double suspiciousSilence = 5; // seconds

/// A machine may well play nothing. A microphone that works has some noise.
bool isSuspicious(SoundState const& sound) {
    return sound.role == StreamRole::microphone && sound.silentSeconds >= suspiciousSilence;
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
        if (!std::exchange(told.isSilent, isSilent) && isSilent)
            tell(fmt::format("The {} has given nothing but silence for {:.0f} seconds. Is it muted?", name,
                             suspiciousSilence));
    }
}

}
