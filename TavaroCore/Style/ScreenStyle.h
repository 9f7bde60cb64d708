#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/RGBAColor.h>

#include <array>
#include <string_view>

namespace tavaro {

/// A drawn device around the recording.
enum class DeviceFrame { none, browserLight, browserDark, macbook, imac, iphone, ipad };

constexpr std::array<std::string_view, 7> namesOf(DeviceFrame) {
    return {"none", "browserLight", "browserDark", "macbook", "imac", "iphone", "ipad"};
}

std::string_view displayName(DeviceFrame frame);
bool isBrowser(DeviceFrame frame);

/// Room that a frame takes beyond the recording, as shares of the recording's width on the canvas.
struct FrameInsets {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;

    bool operator==(FrameInsets const&) const = default;
};
FrameInsets insets(DeviceFrame frame);

/// Outer corner radius as a share of the recording's width on the canvas.
double outerRadius(DeviceFrame frame);

/// Framing of the screen video. Radii, offsets and widths are pixels at a canvas whose smaller side is 1080, and scale
/// with the canvas. A new project shows exactly what was recorded.
struct ScreenStyle {
    double padding = 0; // free canvas on each side, a share of the canvas
    double cornerRadius = 0;
    double shadowRadius = 0;
    double shadowOpacity = 0; // 0…1
    double shadowOffsetY = 0;
    double borderWidth = 0;
    RGBAColor borderColor = {1, 1, 1, 0.18};
    DeviceFrame frame = DeviceFrame::none;
    double inset = 0; // width of the band around the recording, a share of the recording's width
    RGBAColor insetColor = RGBAColor::rgb(0x0F1115);
    RGBAColor frameTint = RGBAColor::clear; // colour of the device body; clear is the standard finish

    static constexpr auto fields = std::tuple{
        field("padding", &ScreenStyle::padding),
        field("cornerRadius", &ScreenStyle::cornerRadius),
        field("shadowRadius", &ScreenStyle::shadowRadius),
        field("shadowOpacity", &ScreenStyle::shadowOpacity),
        field("shadowOffsetY", &ScreenStyle::shadowOffsetY),
        field("borderWidth", &ScreenStyle::borderWidth),
        field("borderColor", &ScreenStyle::borderColor),
        field("frame", &ScreenStyle::frame),
        field("inset", &ScreenStyle::inset),
        field("insetColor", &ScreenStyle::insetColor),
        field("frameTint", &ScreenStyle::frameTint),
    };
    bool operator==(ScreenStyle const&) const = default;
};
static_assert(listsEveryField<ScreenStyle>);

}
