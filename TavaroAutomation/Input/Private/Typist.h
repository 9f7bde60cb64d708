#pragma once

#include <TavaroAutomation/Input/KeyCombo.h>

#include <chrono>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>

namespace tavaro {

/// Between one key and the next.
struct TypingPace {
    std::chrono::milliseconds key{55};
    std::chrono::milliseconds afterWord{25}; // more, after a space or a mark
};

/// The real keyboard of the desktop, as a person uses it. Each action blocks, waits first until the user holds no
/// modifier key any more, and ends with an `AutomationError`: `cancelled`, or `failed` when the display goes away.
/// Whatever it ends with, no key stays pressed, and Caps Lock is as it was. One thread.
///
/// What the layout lacks is typed by keys that it leaves unused; they get their meaning back, none, when this object
/// goes, which takes up to a second after the last of them.
class Typist {
public:
    /// On the X server `display` (empty means `$DISPLAY`). Throws `AutomationError` (`noDisplay`).
    explicit Typist(std::string const& display = {}, TypingPace const& pace = {});
    ~Typist();
    Typist(Typist const&) = delete;
    Typist& operator=(Typist const&) = delete;

    /// UTF-8. Line ends press Return. Throws `AutomationError` (`invalidRequest`) before the first key for text that
    /// holds what no key can make.
    void type(std::string_view text, std::stop_token const& stop = {});
    /// By the symbol of the key, whichever layout is in use.
    void press(KeyCombo const& combo, std::stop_token const& stop = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
