#pragma once

#include "Scenes.h"

#include <cstring>

#include <gtest/gtest.h>

namespace tavaro::scenes {

/// A picture amid a larger one whose pixels must stay as they are: what is drawn past an edge shows there.
struct Guarded {
    Image whole;
    int width;
    int height;

    Guarded(Random& random, int width, int height)
        : whole(picture(random, width + 6, height + 2))
        , width(width)
        , height(height) {
        for (int y = 0; y < whole.height(); ++y)
            for (int x = 0; x < whole.width(); ++x)
                whole.row(y)[4 * x + 3] = static_cast<std::uint8_t>(x % 3 ? 255 : y * 2);
    }
    Guarded(Guarded const& other) : whole(other.whole.copy()), width(other.width), height(other.height) {}

    MutableImageView view() { return {whole.row(1) + 12, width, height, whole.stride()}; }
};

/// The first place where something around the picture changed; empty where nothing did.
inline std::string changedAround(Guarded const& before, Guarded const& after) {
    for (int y = 0; y < before.whole.height(); ++y)
        for (int x = 0; x < before.whole.width(); ++x) {
            auto const isPicture = y >= 1 && y <= before.height && x >= 3 && x < 3 + before.width;
            if (!isPicture && !(at(before.whole, x, y) == at(after.whole, x, y)))
                return std::to_string(x - 3) + ", " + std::to_string(y - 1);
        }
    return {};
}

}
