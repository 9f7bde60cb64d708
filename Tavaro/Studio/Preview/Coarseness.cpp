#include <Tavaro/Studio/Preview/Coarseness.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double wholeTime = 1.0 / 30; // seconds for a picture
constexpr double leastTime = 0.008;    // for drawing, however long reading takes
constexpr std::size_t fewest = 5;      // pictures by which one may judge
constexpr std::size_t many = 30;
constexpr double room = 0.7; // of the time, that a finer picture may be expected to take
constexpr int mostPatience = 16;

double median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

}

void Coarseness::become(int divisor) {
    wasTried_ = divisor < divisor_;
    divisor_ = divisor;
    latest_.clear();
}

void Coarseness::note(double reading, double drawing) {
    latest_.push_back(drawing / std::max(wholeTime - reading, leastTime));
    if (latest_.size() < fewest) return;
    bool const isLate = median({latest_.end() - fewest, latest_.end()}) > 1;
    if (isLate && divisor_ < coarsest) {
        patience_ = wasTried_ ? std::min(2 * patience_, mostPatience) : patience_;
        return become(divisor_ + 1);
    }
    if (latest_.size() < many * static_cast<std::size_t>(patience_)) return;
    double const finer = divisor_ > 1 ? static_cast<double>(divisor_) / (divisor_ - 1) : 1;
    if (divisor_ > 1 && median(latest_) * finer * finer < room) return become(divisor_ - 1);
    wasTried_ = false;
    latest_.clear();
}

}
