#pragma once

#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string_view>
#include <variant>

namespace tavaro {

enum class SplitArrangement { cameraTop, cameraBottom, cameraLeft, cameraRight };

constexpr std::array<std::string_view, 4> namesOf(SplitArrangement) {
    return {"cameraTop", "cameraBottom", "cameraLeft", "cameraRight"};
}

/// What each layout carries.
namespace CanvasContent {

struct Single {

    static constexpr std::tuple<> fields{};
    bool operator==(Single const&) const = default;
};

struct Split {
    SplitArrangement arrangement = SplitArrangement::cameraTop;
    double cameraFraction = 0.4; // share of the canvas given to the camera

    static constexpr double smallestPane = 0.1; // of the canvas; no pane is drawn smaller

    static constexpr auto fields = std::tuple{
        field("arrangement", &Split::arrangement),
        field("cameraFraction", &Split::cameraFraction),
    };
    bool operator==(Split const&) const = default;
};
static_assert(listsEveryField<Split>);

}

/// One pane, or the canvas split between camera and screen.
struct CanvasLayout {
    using Single = CanvasContent::Single;
    using Split = CanvasContent::Split;

    std::variant<Single, Split> content;

    static constexpr std::array<std::string_view, 2> caseNames{"single", "split"};
    bool isSplit() const { return std::holds_alternative<Split>(content); }
    bool operator==(CanvasLayout const&) const = default;
};

}
