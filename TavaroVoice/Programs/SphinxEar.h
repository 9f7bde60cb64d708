#pragma once

#include <TavaroVoice/Transcription/HeardWord.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace tavaro {

/// PocketSphinx with a model folder as Debian has it: the acoustic model, the language model and the dictionary of
/// American English.
class SphinxEar {
public:
    /// Throws `Error` where the model cannot be loaded.
    explicit SphinxEar(std::filesystem::path const& model);
    ~SphinxEar();
    SphinxEar(SphinxEar const&) = delete;
    SphinxEar& operator=(SphinxEar const&) = delete;

    /// The words of 16,000 samples a second.
    std::vector<HeardWord> hear(std::vector<std::int16_t> const& samples);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
