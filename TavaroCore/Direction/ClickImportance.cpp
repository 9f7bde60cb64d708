#include <TavaroCore/Direction/SmartDirector.h>

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

namespace {

using Clicks = std::span<ClickEvent const>;

/// Small text in terminals and editors earns stronger zooms, file browsing weaker ones.
double applicationBias(std::string_view application) {
    struct Bias {
        std::string_view word;
        double bias;
    };
    static constexpr std::array<Bias, 13> words{{
        {"terminal", 0.2},
        {"iterm", 0.2},
        {"ghostty", 0.2},
        {"warp", 0.2},
        {"alacritty", 0.2},
        {"xcode", 0.14},
        {"vscode", 0.14},
        {"code", 0.14},
        {"sublime", 0.14},
        {"jetbrains", 0.14},
        {"figma", 0.06},
        {"sketch", 0.06},
        {"finder", -0.05},
    }};
    std::string name(application);
    for (auto& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (auto const& [word, bias] : words) {
        if (name.find(word) != std::string::npos) return bias;
    }
    return 0;
}

/// Small windows and sheets matter more.
double targetSizeBase(Clicks clicks) {
    constexpr double unknown = 0.42;
    std::optional<double> smallest;
    for (auto const& click : clicks) {
        if (!click.windowFrame) continue;
        double const area = click.windowFrame->area();
        smallest = std::min(smallest.value_or(area), area);
    }
    return smallest && *smallest > 0 ? unknown + 0.35 - 0.6 * std::min(*smallest, 0.8) : unknown;
}

double activityBonus(Clicks clicks) {
    double bonus = std::min((static_cast<double>(clicks.size()) - 1) * 0.06, 0.18);
    if (std::any_of(clicks.begin(), clicks.end(), [](auto const& click) { return click.isDrag; })) bonus += 0.1;
    if (std::any_of(clicks.begin(), clicks.end(), [](auto const& click) { return click.isDoubleClick; })) bonus += 0.08;
    auto const named = std::find_if(clicks.begin(), clicks.end(), [](auto const& click) { return click.application; });
    return named == clicks.end() ? bonus : bonus + applicationBias(*named->application);
}

/// Someone types into what was clicked.
double typingBonus(ZoomCandidate const& candidate, std::span<double const> typing) {
    auto const first = std::lower_bound(typing.begin(), typing.end(), candidate.start);
    return first != typing.end() && *first <= candidate.end + 2.5 ? 0.16 : 0;
}

double edgePenalty(UnitPoint2 const& focus) {
    double const distance = std::min({focus.x, 1 - focus.x, focus.y, 1 - focus.y});
    if (distance < 0.06) return 0.22;
    return distance < 0.12 ? 0.08 : 0;
}

}

double SmartDirector::importance(ZoomCandidate const& candidate, std::span<double const> typing) {
    double const sum = targetSizeBase(candidate.clicks) + activityBonus(candidate.clicks) +
                       typingBonus(candidate, typing) - edgePenalty(candidate.focus);
    return std::clamp(sum, 0.0, 1.0);
}

}
