#pragma once

#include <TavaroCapture/X11/Connection.h>

#include <chrono>
#include <cstdint>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

/// Input as programs see it from a person's devices. For the pointer and the keyboard of this library.
namespace tavaro::x11 {

using InputClock = std::chrono::steady_clock;

/// Sleeps; throws `AutomationError` (`cancelled`) within 20 ms of a request to stop.
void restUntil(InputClock::time_point end, std::stop_token const& stop);
void rest(std::chrono::microseconds length, std::stop_token const& stop);

struct PointerState {
    PixelPoint at;
    bool isPressed = false; // any button, by anybody
};

/// The pointer's state, asked for when this is made; the answer may be taken later.
class PointerQuery {
public:
    explicit PointerQuery(Connection& connection);
    ~PointerQuery();
    PointerQuery(PointerQuery const&) = delete;
    PointerQuery& operator=(PointerQuery const&) = delete;

    /// Waits for it; once. Throws `AutomationError` (`failed`) when the server is gone.
    PointerState answer();

private:
    Connection& connection_;
    xcb_query_pointer_cookie_t cookie_;
    bool isTaken_ = false;
};

/// The server's test extension. Whatever it presses it also releases: the last of its own to go is the object itself.
class FakeInput {
public:
    /// Throws `AutomationError` (`noDisplay`) with what to use instead on a desktop that takes no such input.
    explicit FakeInput(std::string const& display);
    ~FakeInput();
    FakeInput(FakeInput const&) = delete;
    FakeInput& operator=(FakeInput const&) = delete;

    Connection& connection() { return connection_; }
    std::string const& display() const { return display_; }

    enum class Device { keyboard, mouse };
    /// One key or button, pressed while the object lives. When that ends, the server has it released.
    class Held {
    public:
        /// Throws `AutomationError` (`failed`) when the server is gone.
        Held(FakeInput& input, Device device, std::uint8_t code);
        ~Held();
        Held(Held&& other) noexcept
            : input_(std::exchange(other.input_, nullptr))
            , device_(other.device_)
            , code_(other.code_) {}
        Held& operator=(Held&&) = delete;

    private:
        FakeInput* input_;
        Device device_;
        std::uint8_t code_;
    };

    /// Places the pointer, inside of its screens, with the next flush.
    void move(PixelPoint to);
    PixelPoint pointer();

    /// Presses and releases it at once, with those modifier keys around it: what ends this program in the middle of a
    /// text leaves nothing down, and however late it runs, no key repeats.
    void tap(Device device, std::uint8_t code, std::vector<std::uint8_t> const& modifiers = {});

    /// Makes the extension's keyboard the one in use, which a key would do too, but without one that anybody sees.
    void touchKeyboard();

    /// Releases what an earlier program pressed by the same extension and left so when it was killed: keys, or buttons,
    /// that nobody releases for a second. Who works this desktop from another machine may press by it too, and loses
    /// what is held for longer.
    void releaseOrphans(Device device, std::stop_token const& stop);

    /// The extension's own device; 0 where the server does not tell.
    std::uint16_t deviceID(Device device) const { return device == Device::keyboard ? keyboard_ : mouse_; }

private:
    void send(std::uint8_t type, std::uint8_t code, PixelPoint at = {});
    void findDevices();
    std::vector<std::uint8_t> pressed(Device device);

    std::string const display_;
    Connection connection_;
    std::uint16_t keyboard_ = 0;
    std::uint16_t mouse_ = 0;
};

}
