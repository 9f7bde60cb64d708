#include <TavaroCore/Direction/SmartDirector.h>

#include <TavaroCore/Style/ScreenStyle.h>

namespace tavaro {

namespace {

/// A phone is held upright; what is wide, or nearly as wide as high, was recorded on a tablet.
DeviceFrame handheldFrame(Size2 recorded) {
    constexpr double broadestPhone = 1 / 1.63; // between the tablets of 10:16 and the phones of 9:16
    bool const isPhone = recorded.height <= 0 || recorded.aspect() < broadestPhone;
    return isPhone ? DeviceFrame::iphone : DeviceFrame::ipad;
}

}

ScreenStyle SmartDirector::screenStyle(DemoMode mode, Size2 recorded) {
    constexpr RGBAColor hairline{1, 1, 1, 0.16}; // keeps the edge of a dark window visible on a dark background
    switch (mode) {
    case DemoMode::website:
        return {.padding = 0.06,
                .cornerRadius = 14,
                .shadowRadius = 84,
                .shadowOpacity = 0.3,
                .shadowOffsetY = 22,
                .frame = DeviceFrame::browserLight};
    case DemoMode::desktopApp:
        return {.padding = 0.07,
                .cornerRadius = 18,
                .shadowRadius = 110,
                .shadowOpacity = 0.36,
                .shadowOffsetY = 30,
                .borderWidth = 1,
                .borderColor = hairline};
    case DemoMode::mobileApp:
        return {.padding = 0.06,
                .shadowRadius = 90,
                .shadowOpacity = 0.34,
                .shadowOffsetY = 28,
                .frame = handheldFrame(recorded)};
    case DemoMode::dashboard:
        return {.padding = 0.05, .cornerRadius = 14, .shadowRadius = 72, .shadowOpacity = 0.26, .shadowOffsetY = 18};
    case DemoMode::terminal:
        return {.padding = 0.05,
                .cornerRadius = 12,
                .shadowRadius = 84,
                .shadowOpacity = 0.34,
                .shadowOffsetY = 22,
                .borderWidth = 1,
                .borderColor = hairline};
    case DemoMode::plain: return {};
    }
    return {};
}

}
