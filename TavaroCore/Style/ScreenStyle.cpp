#include <TavaroCore/Style/ScreenStyle.h>

namespace tavaro {

std::string_view displayName(DeviceFrame frame) {
    constexpr std::array<std::string_view, 7> names{"None", "Browser", "Dark Browser", "MacBook",
                                                    "iMac", "iPhone",  "iPad"};
    return names[static_cast<std::size_t>(frame)];
}

bool isBrowser(DeviceFrame frame) { return frame == DeviceFrame::browserLight || frame == DeviceFrame::browserDark; }

FrameInsets insets(DeviceFrame frame) {
    switch (frame) {
    case DeviceFrame::none: return {};
    case DeviceFrame::browserLight:
    case DeviceFrame::browserDark: return {0, 0.032, 0, 0};
    case DeviceFrame::macbook: return {0.013, 0.013, 0.013, 0.048};
    case DeviceFrame::imac: return {0.015, 0.015, 0.015, 0.105};
    case DeviceFrame::iphone: return {0.034, 0.044, 0.034, 0.044};
    case DeviceFrame::ipad: return {0.028, 0.028, 0.028, 0.028};
    }
    return {};
}

double outerRadius(DeviceFrame frame) {
    switch (frame) {
    case DeviceFrame::none: return 0;
    case DeviceFrame::browserLight:
    case DeviceFrame::browserDark: return 0.010;
    case DeviceFrame::macbook: return 0.018;
    case DeviceFrame::imac: return 0.014;
    case DeviceFrame::iphone: return 0.110;
    case DeviceFrame::ipad: return 0.036;
    }
    return 0;
}

}
