#pragma once

#include <TavaroVoice/Transcription/HeardWord.h>

#include <string_view>
#include <vector>

namespace tavaro {

/// The words of what whisper.cpp writes with `--output-json-full`: tokens with their times and probabilities, of which
/// words are put together again. What it notes of other sounds ("[Music]", "(laughs)") is no word. A token may be a
/// part of a character, so the text as a whole may not be UTF-8. Throws `RecogniserLost` for what is no such output.
std::vector<HeardWord> wordsOfWhisper(std::string_view output);

}
