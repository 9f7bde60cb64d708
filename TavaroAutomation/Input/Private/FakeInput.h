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

/// Where the pointer is, asked for when this is made; the answer may be taken later.
class PointerQuery {
public:
    explicit PointerQuery(Connection& connection);
    ~PointerQuery();
    PointerQuery(PointerQuery const&) = delete;
    PointerQuery& operator=(PointerQuery const&) = delete;

    /// Waits for it; once. Throws `AutomationError` (`failed`) when the server is gone.
    PixelPoint answer();

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

    enum class Device { keyboard, mouse };
    /// One key or button, pressed while the object lives.
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

    /// Keys, or buttons, that an earlier program pressed by the same extension and left so when it was killed.
    std::vector<std::uint8_t> leftPressed(Device device);
    void release(Device device, std::uint8_t code);

    /// The extension's own device; 0 where the server does not tell.
    std::uint16_t deviceID(Device device) const { return device == Device::keyboard ? keyboard_ : mouse_; }

private:
    void send(std::uint8_t type, std::uint8_t code, PixelPoint at = {});
    void findDevices();

    Connection connection_;
    std::uint16_t keyboard_ = 0;
    std::uint16_t mouse_ = 0;
};

}
