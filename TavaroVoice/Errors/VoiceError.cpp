#include <TavaroVoice/Errors/VoiceError.h>

namespace tavaro {

VoiceError::~VoiceError() = default;

}
