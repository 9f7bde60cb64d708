#pragma once

#include <Tavaro/Agents/Private/ToolArguments.h>

#include <TavaroCapture/Sources/CaptureSource.h>

#include <optional>
#include <string>
#include <variant>

namespace tavaro {

/// What an agent wants recorded.
struct RecordRequest {
    struct Display {
        std::string id;
    };
    struct Window {
        std::string id;
    };
    struct App {
        std::string bundleID;
    };
    /// In points from the display's top-left corner.
    struct Area {
        std::string display;
        double x = 0;
        double y = 0;
        double width = 0;
        double height = 0;
    };

    std::variant<Display, Window, App, Area> target;
    AreaShape aspect = AreaShape::free;
    std::optional<bool> microphone; // absent: as the application is set
    std::optional<bool> systemAudio;
    std::optional<bool> camera;
    int countdown = 3;             // whole seconds
    std::optional<double> seconds; // of a recording that ends by itself, without the countdown
};

enum class RecordingLength { open, fixed };

/// Throws `MCPToolError`.
RecordRequest recordRequest(ToolArguments const& arguments, RecordingLength length);

}
