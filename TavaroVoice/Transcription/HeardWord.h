#pragma once

#include <TavaroCore/Records/Fields.h>

#include <string>

namespace tavaro {

/// A word that an engine heard in a piece of sound.
struct HeardWord {
    std::string text;
    double start = 0; // seconds of the piece
    double end = 0;
    float confidence = 0; // 0…1

    double middle() const { return (start + end) / 2; }

    static constexpr auto fields = std::tuple{
        field("text", &HeardWord::text),
        field("start", &HeardWord::start),
        field("end", &HeardWord::end),
        field("confidence", &HeardWord::confidence),
    };
    bool operator==(HeardWord const&) const = default;
};
static_assert(listsEveryField<HeardWord>);

}
