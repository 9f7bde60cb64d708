#pragma once

#include <TavaroAutomation/Values/UIRect.h>
#include <TavaroCore/Records/Fields.h>

#include <string>

namespace tavaro {

/// An application with a window.
struct UIAppInfo {
    std::string name;     // as the desktop shows it
    std::string bundleID; // its desktop id, else its windows' class
    std::string title;    // of the window in front
    UIRect frame;         // of that window

    static constexpr auto fields = std::tuple{field("name", &UIAppInfo::name), field("bundleID", &UIAppInfo::bundleID),
                                              field("title", &UIAppInfo::title), field("frame", &UIAppInfo::frame)};
    bool operator==(UIAppInfo const&) const = default;
};
static_assert(listsEveryField<UIAppInfo>);

}
