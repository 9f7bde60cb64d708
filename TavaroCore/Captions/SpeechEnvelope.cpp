#include <TavaroCore/Captions/SpeechEnvelope.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tavaro {

namespace {

constexpr std::array<std::uint8_t, 3> mark{'S', 'E', '1'};
constexpr double depth = 96; // decibels
constexpr double loudest = 255;

std::uint8_t byteOf(float level) {
    if (!(level > 0)) return 0;
    double const share = 1 + 20 * std::log10(static_cast<double>(level)) / depth;
    return static_cast<std::uint8_t>(std::lround(loudest * std::clamp(share, 0.0, 1.0)));
}

float levelOf(std::uint8_t byte) {
    return byte == 0 ? 0 : static_cast<float>(std::pow(10, depth * (byte / loudest - 1) / 20));
}

}

Data SpeechEnvelope::packed() const {
    Data data;
    data.bytes.reserve(mark.size() + 1 + levels.size());
    data.bytes.assign(mark.begin(), mark.end());
    data.bytes.push_back(static_cast<std::uint8_t>(std::clamp(rate, 1, 255)));
    for (auto const level : levels) data.bytes.push_back(byteOf(level));
    return data;
}

std::optional<SpeechEnvelope> SpeechEnvelope::unpacked(Data const& data) {
    auto const& bytes = data.bytes;
    bool const isOne = bytes.size() > mark.size() && std::equal(mark.begin(), mark.end(), bytes.begin());
    if (!isOne || bytes[mark.size()] == 0) return std::nullopt;
    SpeechEnvelope envelope{.rate = bytes[mark.size()], .levels = {}};
    for (auto at = bytes.begin() + mark.size() + 1; at != bytes.end(); ++at) envelope.levels.push_back(levelOf(*at));
    return envelope;
}

}
