#pragma once

#include <functional>
#include <string>

namespace tavaro {

inline constexpr int movingScreenWidth = 1920;
inline constexpr int movingScreenHeight = 1080;

/// A page of text-like strokes that scrolls in most of the screen, and a box that crosses it, 60 times a second, until
/// the display is gone. Where somebody wants to be told of flashes, a black field turns white for a fifth of a second
/// every two seconds or so, at any place between two frames: `flashed` gets the moment of the media clock.
void paintForever(std::string const& display, std::function<void(double)> const& flashed = {});

}
