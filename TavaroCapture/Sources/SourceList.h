#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

struct DisplayInfo {
    std::string id;   // "display-1"
    std::string name; // the connector's name, "eDP-1"
    PixelRect frame;
    bool isMain = false;
    bool operator==(DisplayInfo const&) const = default;
};

struct WindowInfo {
    std::uint32_t window = 0; // the X id of the window's contents
    std::string title;
    std::string application; // human name: "Mousepad"
    std::string bundleID;    // desktop id where one is installed ("org.xfce.mousepad"), else the window class
    int pid = 0;             // 0 where the window does not say
    PixelRect frame;         // on the desktop, with the title bar
    bool isMinimized = false;

    std::string id() const; // "window-4512"
    bool operator==(WindowInfo const&) const = default;
};

struct MicrophoneInfo {
    std::string id;   // the sound server's name for it, the same whenever it is plugged in
    std::string name; // "Built-in Audio Analog Stereo"
    bool isDefault = false;
    bool operator==(MicrophoneInfo const&) const = default;
};

struct SystemSoundInfo {
    std::string name;                      // of what plays it: "Monitor of Built-in Audio Analog Stereo"
    std::vector<std::string> applications; // that play something now, each once
    bool operator==(SystemSoundInfo const&) const = default;
};

struct CameraInfo {
    std::string id;   // the same whenever it is plugged in, where the system knows one; else its node, "video0"
    std::string name; // "HD Webcam C525"
    bool isDefault = false;
    bool operator==(CameraInfo const&) const = default;
};

/// What can be recorded of a desktop.
struct SourceList {
    std::vector<DisplayInfo> displays; // empty only where a desktop shares none
    std::vector<WindowInfo> windows;   // frontmost first
    std::vector<MicrophoneInfo> microphones;
    std::optional<SystemSoundInfo> systemSound; // none: nothing here plays sound
    std::vector<CameraInfo> cameras;
    std::vector<std::string> limits; // sentences: what the desktop cannot give
};

}
