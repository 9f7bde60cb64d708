#include <TavaroMedia/Audio/Attacks.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::size_t block = audioRate / 1000;
constexpr std::size_t blocksBefore = 20; // more than a period of the deepest voice
constexpr float rise = 10;               // of power
constexpr float audible = 1e-5f;         // power of a sample, −50 dB
constexpr float begun = 0.2f;            // of the attack's peak
constexpr std::int64_t leadIn = 8;
constexpr std::int64_t distance = audioRate / 20;

float magnitude(StereoSample const& sample) { return std::max(std::abs(sample.left), std::abs(sample.right)); }

float power(std::span<StereoSample const> samples) {
    float sum = 0;
    for (auto const& [left, right] : samples) sum += left * left + right * right;
    return sum / static_cast<float>(samples.size());
}

}

/// Looks at each block with the one before it, where the attack may begin, and the one behind, where its peak may be.
void Attacks::feed(std::span<StereoSample const> samples) {
    samples_.insert(samples_.end(), samples.begin(), samples.end());
    std::size_t from = 0;
    for (; from + 3 * block <= samples_.size(); from += block) judge(from);
    samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(from));
    position_ += static_cast<std::int64_t>(from);
}

void Attacks::judge(std::size_t before) {
    auto const around = std::span(samples_).subspan(before, 3 * block);
    float const now = power(around.subspan(block, block));
    powers_.push_back(power(around.first(block)));
    if (powers_.size() > blocksBefore) powers_.pop_front();
    if (now < audible || now < rise * *std::ranges::max_element(powers_)) return;
    auto const peak = magnitude(*std::ranges::max_element(around.subspan(block), {}, magnitude));
    auto const first = std::ranges::find_if(around, [&](auto const& s) { return magnitude(s) >= begun * peak; });
    auto const at = position_ + static_cast<std::int64_t>(before) + (first - around.begin()) - leadIn;
    if (at - last_ < distance) return;
    found_.push_back(at);
    last_ = at;
}

std::int64_t Attacks::next(std::int64_t position) {
    while (!found_.empty() && found_.front() < position) found_.pop_front();
    return found_.empty() ? none : found_.front();
}

}
