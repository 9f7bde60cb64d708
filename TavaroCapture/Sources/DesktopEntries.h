#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// What the desktop calls an application.
struct ApplicationIdentity {
    std::string bundleID; // desktop id ("org.xfce.mousepad"), else the window class
    std::string name;     // human name ("Mousepad")
    bool operator==(ApplicationIdentity const&) const = default;
};

/// Reads a desktop entry's `key` ("Name") from its main group; none when it has none.
std::optional<std::string> desktopEntryValue(std::string_view entry, std::string_view key);

/// Finds the installed application that windows of this class belong to, by `StartupWMClass`, then by the entry's id.
/// Without one, the class names it; with neither, `fallback` (a window's title) does. The installed entries are read
/// once, on the first call. Any thread.
ApplicationIdentity identifyApplication(std::string const& instance, std::string const& windowClass,
                                        std::string const& fallback);

}
