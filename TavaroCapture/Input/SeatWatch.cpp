#include <TavaroCapture/Input/Private/SeatWatch.h>

#include <chrono>
#include <systemd/sd-bus.h>
#include <systemd/sd-login.h>
#include <unistd.h>
#include <utility>

namespace tavaro::input {

namespace {

constexpr std::chrono::microseconds patience = std::chrono::milliseconds(100);

}

void SeatWatch::CloseBus::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

SeatWatch::SeatWatch(std::string seat) : seat_(std::move(seat)) {
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0) return;
    bus_.reset(bus);
    sd_bus_set_method_call_timeout(bus, patience.count());
}

bool SeatWatch::isOthers() {
    constexpr int requireActive = 1;
    return ::sd_uid_is_on_seat(::getuid(), requireActive, seat_.c_str()) == 0 || isLocked();
}

bool SeatWatch::isLocked() {
    int isLocked = 0;
    bool const isTold = bus_ && sd_bus_get_property_trivial(
                                    bus_.get(), "org.freedesktop.login1", "/org/freedesktop/login1/session/auto",
                                    "org.freedesktop.login1.Session", "LockedHint", nullptr, 'b', &isLocked) >= 0;
    return isTold && isLocked != 0;
}

}
