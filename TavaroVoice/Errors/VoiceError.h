#pragma once

#include <TavaroCore/Errors/Error.h>

#include <string>
#include <string_view>

namespace tavaro {

/// Speech cannot be made, or not be understood.
class VoiceError : public Error {
public:
    enum class Kind {
        noKey,       // the voice needs a service's key, and there is none
        rejectedKey, // the service does not know the key
        quotaUsedUp, // the service's characters are used up
        notReached,  // the service does not answer, or not in time
        service,     // it answers otherwise than it should
        noVoice,     // there is no such voice here
        noEngine,    // no program or model on this machine does it
        nothingToSay,
        tooLong, // more text, or sound, than is made at once
        noSound, // nothing to listen to
        unreadableSound,
        unknownLocale, // no engine here understands or speaks that language
        failed,        // an engine broke down
        cancelled,
    };
    VoiceError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    VoiceError(VoiceError const&) = default;
    VoiceError& operator=(VoiceError const&) = delete;
    ~VoiceError() override;

    Kind const kind;
};

VoiceError noSuchVoice(std::string_view id);
VoiceError cancelledSpeech();

}
