#pragma once

#include <TavaroCapture/Input/Private/InputDevices.h>
#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tavaro {

/// A seat whose keys and buttons the test presses.
struct FakeSeat {
    Bell news;
    std::atomic<int> keyboards = 1;
    std::atomic<int> pointers = 1;
    bool areNumbersLocked = false;

    /// Stamped with the present moment, which is returned.
    double send(input::InputEvent::Kind kind, std::uint32_t code);
    double press(std::uint32_t key) { return send(input::InputEvent::Kind::keyPress, key); }
    double release(std::uint32_t key) { return send(input::InputEvent::Kind::keyRelease, key); }
    double tap(std::uint32_t key);
    double pressButton(std::uint32_t button) { return send(input::InputEvent::Kind::buttonPress, button); }
    double releaseButton(std::uint32_t button) { return send(input::InputEvent::Kind::buttonRelease, button); }

    std::mutex lock;
    std::vector<input::InputEvent> events; // guarded by lock; not read yet
};

/// The devices of such a seat.
std::unique_ptr<input::InputDevices> devicesOf(std::shared_ptr<FakeSeat> seat);

/// Where a desktop says that its pointer is, if it does.
struct FakePointer {
    std::mutex lock;
    std::optional<PixelPoint> point; // guarded by lock
    EventHandlers told;              // whom the desktop tells of the rest, once it has begun

    void move(std::optional<PixelPoint> to);
};

/// A desktop that tells of its pointer, and of nothing else by itself.
std::unique_ptr<EventSource> desktopOf(std::shared_ptr<FakePointer> pointer);

}
