#include <TavaroCore/Recording/LostSpots.h>

#include <TavaroCore/Values/Timecode.h>

#include <algorithm>
#include <fmt/format.h>

namespace tavaro {

std::optional<std::string> lostSpots(CaptureHealth const& health) {
    constexpr std::size_t mostNamed = 5;
    auto const& spots = health.interruptedAt;
    if (spots.empty()) return std::nullopt;
    std::string result = "It was interrupted at ";
    std::size_t const named = std::min(spots.size(), mostNamed);
    for (std::size_t i = 0; i < named; ++i) {
        bool const isLast = i + 1 == spots.size();
        result += fmt::format("{}{}", i == 0 ? "" : isLast ? " and " : ", ", Timecode::format(spots[i]));
    }
    if (spots.size() > named) result += fmt::format(" and at {} more places", spots.size() - named);
    return result + ".";
}

}
