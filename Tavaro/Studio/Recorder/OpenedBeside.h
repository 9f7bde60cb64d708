#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace tavaro {

/// A device that is opened and closed beside the main queue, to which everything here belongs. What was wished last
/// counts; no two are ever open at once, and it is closed when this goes away.
template<class Monitor> class OpenedBeside {
public:
    using Open = std::function<std::unique_ptr<Monitor>()>;
    using Opened = std::function<void(std::exception_ptr failure)>; // null: it is open

    OpenedBeside(MainQueue& queue, std::string label) : side_(queue, std::move(label)) {}
    ~OpenedBeside() { close(); }
    OpenedBeside(OpenedBeside const&) = delete;
    OpenedBeside& operator=(OpenedBeside const&) = delete;

    /// Null while none is open.
    Monitor* get() const { return monitor_; }

    /// `opened` is not called where something else is wished before it is open.
    void open(Open open, Opened opened) {
        close();
        side_.ask(
            [device = device_, open = std::move(open)] {
                device->monitor = open();
                return device->monitor.get();
            },
            [this, opened = std::move(opened), wish = wish_](Outcome<Monitor*> const& outcome) {
                if (wish != wish_) return;
                if (!outcome.failure()) monitor_ = outcome.value();
                opened(outcome.failure());
            });
    }
    void close() {
        ++wish_;
        monitor_ = nullptr;
        side_.thread().async([device = device_] { device->monitor.reset(); });
    }
    /// The same; tells when it is closed.
    void close(std::function<void()> closed) {
        close();
        side_.ask([] { return true; }, [closed = std::move(closed)](auto const&) { closed(); });
    }

private:
    struct Device {
        std::unique_ptr<Monitor> monitor; // opened and closed on the other thread
    };

    std::shared_ptr<Device> const device_ = std::make_shared<Device>();
    Monitor* monitor_ = nullptr; // of the device, while this has told of it
    int wish_ = 0;
    SideQueue side_; // ends first
};

}
