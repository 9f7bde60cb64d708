#pragma once

namespace tavaro {

/// What is played of a film; output seconds.
struct Passage {
    enum class AtEnd { stop, repeat };

    double from = 0;
    double start = 0; // from where it goes on after its end, where it repeats
    double end = 0;
    AtEnd atEnd = AtEnd::stop;
    double speed = 1; // 0.5 is half speed

    bool operator==(Passage const&) const = default;
};

}
