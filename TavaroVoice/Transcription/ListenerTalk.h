#pragma once

#include <TavaroCore/Records/Data.h>
#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroVoice/Transcription/HeardWord.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What is said to the program `tavaro-listener` and by it: a line of JSON each. It says one when it is ready, and one
/// for each that it is sent.
namespace tavaro {

/// A piece of sound to hear: 16 bits a sample, low byte first, at `speechRate`.
struct ListenerRequest {
    Data sound;

    static constexpr auto fields = std::tuple{field("sound", &ListenerRequest::sound)};
};
static_assert(listsEveryField<ListenerRequest>);

struct ListenerReply {
    std::vector<HeardWord> words;
    std::optional<std::string> failure; // why the listener cannot hear anything

    static constexpr auto fields = std::tuple{
        field("words", &ListenerReply::words),
        field("failure", &ListenerReply::failure),
    };
};
static_assert(listsEveryField<ListenerReply>);

/// Longer lines are not read: an hour of sound has none.
inline constexpr std::size_t longestListenerLine = std::size_t{16} << 20;

/// Without the line break.
std::string requestLine(MonoSound const& piece);
std::vector<std::int16_t> samplesOf(ListenerRequest const& request);

/// Throws `RecogniserLost` for a line that is no reply.
ListenerReply readReply(std::string_view line);

/// What an engine says as words of a piece so long: with text, in order, inside of it, sure from 0 to 1. What is
/// otherwise is mended where that is possible, else left out.
std::vector<HeardWord> soundWords(std::vector<HeardWord> words, double seconds);

}
