#include <TavaroVoice/Transcription/Recogniser.h>

namespace tavaro {

Recogniser::~Recogniser() = default;

}
