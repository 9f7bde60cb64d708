#pragma once

#include <TavaroAutomation/Input/Private/FakeInput.h>

namespace tavaro::x11 {

/// Notices that somebody else moves the pointer: a device of the user's reports motion, or, since other programs move
/// it by the same extension as this one does, it is no longer exactly where it was put.
class UserMotion {
public:
    explicit UserMotion(FakeInput& input);

    /// What happened before this does not count.
    void forget();
    /// Moves the pointer for us.
    void move(PixelPoint to);
    /// Throws `AutomationError` (`userMoved`).
    void expectNone();

private:
    bool hasForeignEvent();
    bool isOnAScreen(PixelPoint at) const;

    FakeInput& input_;
    std::vector<PixelRect> screens_;
    PixelPoint expected_;
};

}
