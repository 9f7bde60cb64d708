#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <TavaroRender/Kernels/Private/CameraPlan.h>

namespace tavaro {

/// The shadow of a box that stays where it is, kept from frame to frame.
class CameraShadow {
public:
    void prepare(CameraPlan const& plan);

    /// For each column of the plan, 0…65535; null where the box throws no shadow that shows by itself.
    std::uint16_t const* row(int y) const;

private:
    /// What the shadow depends on.
    struct Key {
        Float2 center;
        Float2 halfSize;
        float cornerRadius = 0;
        float strength = 0;
        PixelSpan columns;
        PixelSpan rows;
        bool operator==(Key const&) const = default;
    };

    std::optional<Key> key_;
    std::vector<std::uint16_t> strengths_;
};

}
