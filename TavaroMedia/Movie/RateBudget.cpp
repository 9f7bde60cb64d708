#include <TavaroMedia/Movie/Private/RateBudget.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double savingSeconds = 2;
constexpr double overdrawnSeconds = 1;
constexpr double repaymentSeconds = 10;

}

void RateBudget::spend(std::int64_t bytes, double seconds) {
    debt_ = std::max(debt_ + 8.0 * static_cast<double>(bytes) - bitrate_ * seconds, -savingSeconds * bitrate_);
}

bool RateBudget::isOverdrawn() const { return debt_ > overdrawnSeconds * bitrate_; }

std::int64_t RateBudget::repayingRate() const {
    return std::llround(std::max(bitrate_ - std::max(debt_, 0.0) / repaymentSeconds, bitrate_ / 2));
}

}
