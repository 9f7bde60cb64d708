#pragma once

#include "../TestDisplay.h"

#include <TavaroCapture/Sources/Private/EventSource.h>

#include <mutex>
#include <string>
#include <unistd.h>

namespace tavaro::wayland {

/// What was told of the window in front, and of keys.
class FrontLog {
public:
    EventHandlers handlers() {
        return {.key =
                    [this](double, Chord const& chord) {
                        std::lock_guard const guard(lock_);
                        keys_ += chord.key;
                    },
                .frontmost =
                    [this](FrontWindow const& window) {
                        std::lock_guard const guard(lock_);
                        front_ = window.application ? window.application->name : "";
                    }};
    }
    bool shows(std::string const& name) {
        return eventually([&] {
            usleep(5000);
            std::lock_guard const guard(lock_);
            return front_ == name;
        });
    }
    std::string keys() {
        std::lock_guard const guard(lock_);
        return keys_;
    }

private:
    std::mutex lock_;
    std::string front_; // guarded by lock_, as the next
    std::string keys_;
};

}
