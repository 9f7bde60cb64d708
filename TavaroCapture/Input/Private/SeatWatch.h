#pragma once

#include <memory>
#include <string>

struct sd_bus;

namespace tavaro::input {

/// Whether what is typed at the seat is this user's to record. Devices tell of every key that is pressed, also of those
/// that go to a console, to another user's desktop, or to a screen lock. One thread.
class SeatWatch {
public:
    explicit SeatWatch(std::string seat);

    /// Where nobody keeps account of seats, it is. Costs a file and a call of the system's bus.
    bool isOthers();

private:
    struct CloseBus {
        void operator()(sd_bus* bus) const;
    };
    bool isLocked();

    std::string const seat_;
    std::unique_ptr<sd_bus, CloseBus> bus_; // none: there is none
};

}
