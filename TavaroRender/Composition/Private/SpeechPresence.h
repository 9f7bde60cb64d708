#pragma once

#include <memory>

namespace tavaro {

struct DemoProject;

/// How present the speaker is over the edit: 1 while somebody speaks, fading to 0 in long silences, and back before the
/// next word. Knows from the transcript, else from the microphone's levels; without either the speaker is always there.
/// The ranges are found when they are first asked for. Any thread.
class SpeechPresence {
public:
    /// `project` must stay where it is.
    explicit SpeechPresence(DemoProject const& project);
    ~SpeechPresence();

    double at(double outputTime) const; // 0…1

private:
    struct Ranges;
    DemoProject const& project_;
    std::unique_ptr<Ranges> ranges_;
};

}
