#include <TavaroCore/Direction/SmartDirector.h>

#include <TavaroCore/Style/ScreenStyle.h>

namespace tavaro {

ScreenStyle SmartDirector::screenStyle(DemoMode mode) {
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
                .frame = DeviceFrame::iphone};
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
