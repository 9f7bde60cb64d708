#pragma once

#include <memory>

namespace tavaro {

/// A mouse that is plugged into a desktop of wlroots (`$WAYLAND_DISPLAY`) while the object lives.
class TestMouse {
public:
    TestMouse();
    ~TestMouse();
    TestMouse(TestMouse const&) = delete;
    TestMouse& operator=(TestMouse const&) = delete;

    /// To a point of a screen that is so large.
    void moveTo(unsigned x, unsigned y, unsigned width, unsigned height);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
