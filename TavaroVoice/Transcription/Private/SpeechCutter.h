#pragma once

#include <TavaroMedia/Audio/MonoSound.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace tavaro {

/// A piece of a long sound, with some of its neighbours around it, so that a word at its edge is whole in one of both.
struct SpeechPiece {
    MonoSound sound;  // at `speechRate`
    double start = 0; // of `sound`, in seconds of the whole
    double from = 0;  // the words between are this piece's
    double to = 0;
    std::vector<float> levels; // of each 20 ms of `sound`
};

/// Cuts a sound of any length into pieces, each where it is quietest in the second half of the time that it may last:
/// between two sentences wherever there are some. Holds little more than a piece.
class SpeechCutter {
public:
    /// Of sound at `audioRate`.
    explicit SpeechCutter(double mostSeconds, std::function<void(SpeechPiece)> take);

    void feed(std::span<float const> samples);
    /// Nothing more comes.
    void finish();

private:
    void cutAt(std::size_t sample, bool isLast);
    std::size_t quietest() const;

    std::size_t const most_; // samples of a piece, without what is around it
    std::function<void(SpeechPiece)> const take_;
    std::vector<float> held_;   // with what is before the piece
    std::size_t before_ = 0;    // how many of them are that
    std::int64_t position_ = 0; // of the first one held
};

}
