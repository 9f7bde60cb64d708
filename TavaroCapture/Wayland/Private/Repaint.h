#pragma once

#include <memory>

namespace tavaro::wayland {

/// Has the compositor draw every screen anew, for desktops that send a picture of what they share only when something
/// on it changes: an invisible pixel of ours is put above all else, and goes with the object. Nothing happens where the
/// compositor lets nobody do that, or there is none. One thread; never waits.
class Repaint {
public:
    Repaint();
    ~Repaint();
    Repaint(Repaint const&) = delete;
    Repaint& operator=(Repaint const&) = delete;

    /// Once more, as soon as the compositor has answered what is to be answered; to be called some dozens of times a
    /// second until a picture has come.
    void again();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
