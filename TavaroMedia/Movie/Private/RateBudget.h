#pragma once

#include <cstdint>

namespace tavaro {

/// What an encoder may spend at a film's bit rate, and what it has spent. What it saves counts for the next two
/// seconds of the film only, so that a quiet beginning does not pay for a flood.
class RateBudget {
public:
    explicit RateBudget(std::int64_t bitrate) : bitrate_(static_cast<double>(bitrate)) {}

    /// A frame that is on show for so long took so many bytes.
    void spend(std::int64_t bytes, double seconds);
    /// Whether a second's worth has been spent too much.
    bool isOverdrawn() const;
    /// The bit rate at which ten seconds of film repay what was spent too much.
    std::int64_t repayingRate() const;

private:
    double bitrate_;
    double debt_ = 0; // bits; below zero, what was saved
};

}
