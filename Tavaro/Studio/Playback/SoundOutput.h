#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace tavaro {

/// What makes samples of 48 kHz heard. It runs on the thread that calls it, and only during the calls.
class SoundOutput {
public:
    enum class State {
        opening,
        ready,
        gone, // there is no device, or no more
    };

    virtual ~SoundOutput() = default;

    /// Asks for a device. What is written from then on counts from sample 0; nothing of before is heard any more.
    virtual void open() = 0;
    /// Silence, at once; the device is free.
    virtual void close() = 0;
    virtual State state() const = 0;
    /// Why it is gone, without a full stop.
    virtual std::string reason() const = 0;

    /// Waits, at most so long, until there is something to do.
    virtual void run(std::chrono::milliseconds atMost) = 0;
    /// How many samples it takes now.
    virtual std::size_t room() const = 0;
    virtual void write(std::span<StereoSample const> samples) = 0;
    /// The number of the sample that is heard at this moment; none while nothing is, or it is not known.
    virtual std::optional<double> heard() const = 0;
};

}
