#include "FakeInput.h"

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <utility>

namespace tavaro {

namespace {

class Devices final : public input::InputDevices {
public:
    explicit Devices(std::shared_ptr<FakeSeat> seat) : seat_(std::move(seat)) {}

    int descriptor() const override { return seat_->news.descriptor(); }
    void read(FunctionRef<void(input::InputEvent const&)> handler) override {
        seat_->news.hush();
        std::vector<input::InputEvent> events;
        {
            std::lock_guard const guard(seat_->lock);
            events = std::exchange(seat_->events, {});
        }
        for (auto const& event : events) handler(event);
    }
    int keyboards() const override { return seat_->keyboards; }
    int pointers() const override { return seat_->pointers; }
    bool areNumbersLocked() const override { return seat_->areNumbersLocked; }

private:
    std::shared_ptr<FakeSeat> const seat_;
};

class Desktop final : public EventSource {
public:
    explicit Desktop(std::shared_ptr<FakePointer> pointer) : pointer_(std::move(pointer)) {}

    void start(EventHandlers handlers) override { pointer_->told = std::move(handlers); }
    void stop() override {}
    bool hasKeyboard() const override { return false; }
    std::optional<PixelPoint> pointer() override {
        std::lock_guard const guard(pointer_->lock);
        return pointer_->point;
    }

private:
    std::shared_ptr<FakePointer> const pointer_;
};

}

double FakeSeat::send(input::InputEvent::Kind kind, std::uint32_t code) {
    double const at = mediaClockNow();
    {
        std::lock_guard const guard(lock);
        events.push_back({kind, at, code});
    }
    news.ring();
    return at;
}

double FakeSeat::tap(std::uint32_t key) {
    double const at = press(key);
    release(key);
    return at;
}

void FakePointer::move(std::optional<PixelPoint> to) {
    std::lock_guard const guard(lock);
    point = to;
}

std::unique_ptr<input::InputDevices> devicesOf(std::shared_ptr<FakeSeat> seat) {
    return std::make_unique<Devices>(std::move(seat));
}

std::unique_ptr<EventSource> desktopOf(std::shared_ptr<FakePointer> pointer) {
    return std::make_unique<Desktop>(std::move(pointer));
}

}
