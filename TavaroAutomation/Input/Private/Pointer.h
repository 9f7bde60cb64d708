#pragma once

#include <TavaroAutomation/Input/UIMouseButton.h>
#include <TavaroAutomation/Values/UIRect.h>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace tavaro {

/// Where something is now; nothing when that cannot be known.
using PlaceOfTarget = std::function<std::optional<UIPoint>()>;

/// The real pointer of the desktop, moved as by a person's hand. Each action blocks, and ends with an
/// `AutomationError`: `userMoved` within 20 ms of the user's moving the mouse, `cancelled` when `stop` asks for it,
/// `failed` when the display goes away. Each waits first until the user holds no modifier key any more. Whatever it
/// ends with, no button stays pressed. One thread.
class Pointer {
public:
    /// On the X server `display` (empty means `$DISPLAY`). Throws `AutomationError` (`noDisplay`).
    explicit Pointer(std::string const& display = {});
    ~Pointer();
    Pointer(Pointer const&) = delete;
    Pointer& operator=(Pointer const&) = delete;

    UIPoint position();

    /// Takes that many seconds. What moved meanwhile is followed: `place` is asked when the pointer is there, up to
    /// three times.
    void glide(UIPoint const& to, double seconds, std::stop_token const& stop = {}, PlaceOfTarget const& place = {});

    /// 1 to 3 times, where the last glide ended; `userMoved` where the pointer is no longer there, `notShown` where the
    /// window went before the last.
    void click(UIMouseButton button, int count, std::stop_token const& stop = {});

    /// Pixels that the wheel is to move what is under the pointer; negative ones up and to the left.
    struct Distance {
        double down = 0;
        double right = 0;
    };
    struct Scrolled {
        Distance went;        // as seen on the screen, in whole notches of the wheel
        bool isAtEnd = false; // nothing moved any more, though the program answers
        bool isSeen = true;   // false: what moved could not be followed, and the distance is reckoned by the notches
    };
    /// `noElements` where the program does not answer.
    /// `place` is of something that is scrolled: where the pixels under the pointer are plain, they do not show it.
    Scrolled scroll(Distance const& distance, std::stop_token const& stop = {}, PlaceOfTarget const& place = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
