#pragma once

#include <TavaroAutomation/Input/Private/FakeInput.h>

#include <optional>
#include <vector>

namespace tavaro::x11 {

/// Notices that somebody else has the mouse: a device of the user's reports motion, or, since other programs move it by
/// the same extension as this one does, it is no longer exactly where it was put; or a button is held on the way.
class UserMotion {
public:
    explicit UserMotion(FakeInput& input);

    /// What happened before this does not count.
    void forget();
    /// Moves the pointer for us. Returns at once.
    void move(PixelPoint to);
    /// Throws `AutomationError` where no display shows that place: the server would put the pointer somewhere else.
    void expectOnAScreen(PixelPoint at) const;
    /// Both throw `AutomationError` (`userMoved`, or `failed` where displays came or went): by what the server has
    /// answered and reported so far, which lags a step behind; and by asking it.
    void expectNoneSoFar();
    void expectNone();

private:
    [[noreturn]] void refuse();
    void takeAnswers();
    bool hasForeignEvent();
    bool isOnAScreen(PixelPoint at) const;

    FakeInput& input_;
    std::vector<PixelRect> screens_;
    PixelPoint expected_;

    // Of the latest move, until the answers are taken: where it went, and where the pointer was right before and after.
    PixelPoint target_;
    std::optional<PointerQuery> before_;
    std::optional<PointerQuery> after_;
};

}
