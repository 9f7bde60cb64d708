#include <TavaroVoice/Transcription/Private/Recogniser.h>

namespace tavaro {

Recogniser::~Recogniser() = default;

}
