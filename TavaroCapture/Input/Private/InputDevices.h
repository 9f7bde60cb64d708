#pragma once

#include <TavaroCore/Records/FunctionRef.h>

#include <cstdint>
#include <memory>

namespace tavaro::input {

/// A key or a button that went down or up, of all devices together: a key that is down on two of them is pressed once.
struct InputEvent {
    enum class Kind { keyPress, keyRelease, buttonPress, buttonRelease };
    Kind kind = Kind::keyPress;
    double at = 0;          // moment of the media clock
    std::uint32_t code = 0; // the kernel's number of it
};

/// The keyboards, mice, touchpads and pens of the user's seat, as they come and go. One thread.
class InputDevices {
public:
    virtual ~InputDevices() = default;
    /// To wait for news by `poll`; below 0: none will come.
    virtual int descriptor() const = 0;
    /// What has come since.
    virtual void read(FunctionRef<void(InputEvent const&)> handler) = 0;

    /// Those that could be opened.
    virtual int keyboards() const = 0;
    virtual int pointers() const = 0;
    /// Whether a keyboard showed that its number pad makes digits when it was opened.
    virtual bool areNumbersLocked() const = 0;
};

}
