#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace tavaro {

/// A place on the desktop, in its pixels.
struct PixelPoint {
    int x = 0;
    int y = 0;
    bool operator==(PixelPoint const&) const = default;
};

/// A rectangle of desktop pixels; the origin is the top-left of the whole desktop, y downward.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    PixelRect intersection(PixelRect const& other) const;
    /// The smallest rectangle around both.
    PixelRect unionWith(PixelRect const& other) const;
    bool operator==(PixelRect const&) const = default;
};

/// One monitor; ids are "display-1", "display-2", … in the server's order. An empty id is the main display.
struct DisplaySource {
    std::string id;
    bool operator==(DisplaySource const&) const = default;
};

/// One window with its title bar, by the X window id of its contents; right also where other windows cover it.
struct WindowSource {
    std::uint32_t id = 0;
    bool operator==(WindowSource const&) const = default;
};

/// All windows of an application, by the application's name, its window class or its desktop id.
struct ApplicationSource {
    std::string name;
    bool operator==(ApplicationSource const&) const = default;
};

/// What an area's sides are held to.
enum class AreaShape { free, wide, tall, square, portrait, standard };

constexpr std::array<std::string_view, 6> namesOf(AreaShape) { return {"free", "16:9", "9:16", "1:1", "4:5", "4:3"}; }

/// The largest part of that shape, from the same top-left corner.
PixelRect shaped(PixelRect const& rect, AreaShape shape);

struct AreaSource {
    PixelRect rect;                    // on the desktop, or on the display below, from its top-left corner
    std::string display = {};          // the id of the one it is on: what reaches past that is left out
    AreaShape shape = AreaShape::free; // of what is on the screen
    bool operator==(AreaSource const&) const = default;
};

using CaptureSource = std::variant<DisplaySource, WindowSource, ApplicationSource, AreaSource>;

/// A microphone of the session's sound server, by its id as listed; an empty one is the default microphone.
struct MicrophoneSource {
    std::string id;
    bool operator==(MicrophoneSource const&) const = default;
};

/// What the machine plays by its default output, whichever that is at the time; or what one application plays, by its
/// name, its program or its id.
struct SystemSoundSource {
    std::string application; // empty: all of them
    bool operator==(SystemSoundSource const&) const = default;
};

/// A camera, by its id as listed, its name or its node; an empty id is the default camera.
struct CameraDeviceSource {
    std::string id;
    std::map<std::string, double> lags = {}; // of cameras, by id: seconds by which they tell a moment too late
    bool operator==(CameraDeviceSource const&) const = default;
};

/// What a take's marker calls it: "display", "window", "application" or "area".
std::string_view recordingMode(CaptureSource const& source);

/// Reads what people write for a window: "window-4512", "4512" or "0x11a0". Throws `CaptureError`.
WindowSource parseWindowSource(std::string_view text);
/// Reads "X,Y,W,H" in desktop pixels. Throws `CaptureError` for anything else and for a side below 2 pixels.
AreaSource parseAreaSource(std::string_view text);

}
