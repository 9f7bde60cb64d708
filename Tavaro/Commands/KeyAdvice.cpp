#include <Tavaro/Commands/KeyAdvice.h>

#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <fmt/format.h>

#include <string>

namespace tavaro::commands {

VoiceError withKeyAdvice(VoiceError const& error) {
    std::string const sentence = error.what();
    bool const isAdvised = sentence.find(elevenLabsKey::variable) != std::string::npos;
    if (error.kind != VoiceError::Kind::noKey || isAdvised) return error;
    return {error.kind, fmt::format("{} `tavaro voices key set` keeps it in your keychain; without a keychain, put it "
                                    "into the variable {}.",
                                    sentence, elevenLabsKey::variable)};
}

}
