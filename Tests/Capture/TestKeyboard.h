#pragma once

#include <cstdint>
#include <memory>

namespace tavaro {

/// A keyboard that is plugged into a desktop of wlroots (`$WAYLAND_DISPLAY`) while the object lives.
class TestKeyboard {
public:
    TestKeyboard();
    ~TestKeyboard();
    TestKeyboard(TestKeyboard const&) = delete;
    TestKeyboard& operator=(TestKeyboard const&) = delete;

    /// Down and up; by the kernel's number.
    void tap(std::uint32_t key);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
