#pragma once

#include <TavaroVision/Reading/Private/LineImage.h>
#include <TavaroVision/Reading/ReadText.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

namespace tavaro {

/// Reads lines of text, several at once, each worker in a process of its own (`tavaro-reader`) that is started when it
/// is first needed, and again after it broke down or hung. The workers live as long as this object.
///
/// The caller owns the images until `read` returns; each worker's thread owns its process. One thread at a time.
class TextReader {
public:
    struct Options {
        std::optional<std::filesystem::path> program; // none: `tavaro-reader`, where it is installed
        int workers = 0;                              // 0: one a core
        std::chrono::milliseconds start{30'000};      // how long a worker may take to begin
        std::chrono::milliseconds line{10'000};       // and for a line
    };

    TextReader();
    explicit TextReader(Options const& options);
    /// Ends the workers.
    ~TextReader();
    TextReader(TextReader const&) = delete;
    TextReader& operator=(TextReader const&) = delete;

    /// What the lines say, in their order; words are where they are in the picture. A line over which a worker breaks
    /// twice has no words. Throws `VisionError`: `noReader` where no worker can be had, `broken` where they break over
    /// every line, `cancelled` within a twentieth of a second after a stop is requested.
    std::vector<ReadLine> read(std::span<LineImage const> lines, std::stop_token const& stop);

    /// How many lines were left out since the beginning.
    std::size_t leftOut() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
