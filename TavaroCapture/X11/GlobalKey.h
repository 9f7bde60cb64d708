#pragma once

#include <TavaroCapture/Sources/Chord.h>

#include <functional>
#include <memory>
#include <string>

namespace tavaro::x11 {

/// A shortcut that works whichever window has the keyboard, for as long as the object lives. Other programs do not hear
/// of it.
class GlobalKey {
public:
    /// `shortcut` as people write it: "ctrl+alt+p", "F9", "super+Pause". `pressed` is called on a thread of the
    /// object's own. Throws `CaptureError` where no key is called so, another program has the shortcut, or no server
    /// answers.
    GlobalKey(std::string const& shortcut, std::string const& display, std::function<void()> pressed);
    /// Nothing is called after it.
    ~GlobalKey();
    GlobalKey(GlobalKey const&) = delete;
    GlobalKey& operator=(GlobalKey const&) = delete;

    /// As a take's log would have it.
    Chord const& chord() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
