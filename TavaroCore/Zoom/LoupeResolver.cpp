#include <TavaroCore/Zoom/LoupeResolver.h>

namespace tavaro::LoupeResolver {

std::optional<LoupeState> resolve(std::span<ZoomEvent const> events, double at, std::optional<CentreProvider> centre) {
    constexpr double leastPresence = 0.001;
    ZoomEvent const* shown = nullptr;
    double strongest = leastPresence;
    for (auto const& event : events) {
        if (!event.isLoupe()) continue;
        double const weight = presence(event, at);
        if (!(weight > strongest)) continue;
        shown = &event;
        strongest = weight;
    }
    if (!shown) return std::nullopt;
    return LoupeState{
        .center = centreOf(*shown, at, centre),
        .radius = shown->loupeSize * (0.55 + 0.45 * strongest),
        .magnification = 1 + strongest * (shown->scale - 1),
        .presence = strongest,
    };
}

}
