#pragma once

#include <TavaroVoice/Errors/VoiceError.h>

#include <TavaroPlatform/Processes/ProgramRun.h>

#include <string>

namespace tavaro {

/// "The voice failed: espeak-ng …".
VoiceError engineFailure(std::string const& engine, std::string const& reason);

/// Throws `VoiceError` (`cancelled`, `failed`) where the engine's program did not do its work.
void expectGood(ProgramAnswer const& answer, std::string const& engine);

}
