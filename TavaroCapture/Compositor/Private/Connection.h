#pragma once

#include <TavaroCore/Files/ReleaseWith.h>

#include <chrono>
#include <memory>
#include <sys/types.h>
#include <wayland-client.h>

/// A connection to the Wayland desktop. For the sources of this library only.
namespace tavaro::compositor {

/// To the one that `$WAYLAND_DISPLAY` names. It runs on the thread that calls it, and only during the calls. What is
/// made of it goes first.
class Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// Never waits.
    Connection();

    /// Whether there was a desktop to connect to.
    bool isOpen() const { return display_ != nullptr; }
    wl_display* get() const { return display_.get(); }
    /// To wait for news by `poll`.
    int descriptor() const { return wl_display_get_fd(display_.get()); }
    /// The desktop's own; 0 where the system does not tell.
    pid_t process() const;

    /// Sends what was asked and takes in what the desktop says, which is waited for so long at most; false once it is
    /// gone.
    bool letIn(std::chrono::milliseconds atMost = std::chrono::milliseconds(0)) const;
    /// Until everything that was asked so far is answered; false when that is not so in time.
    bool settle(Clock::time_point until) const;

private:
    std::unique_ptr<wl_display, ReleaseWith<wl_display_disconnect>> display_;
};

}
