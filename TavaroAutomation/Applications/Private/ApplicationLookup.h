#pragma once

#include <TavaroAutomation/Applications/Private/OpenWindows.h>
#include <TavaroCapture/Sources/DesktopEntries.h>

#include <optional>
#include <string_view>
#include <vector>

namespace tavaro {

/// Whether both are one name to people: case does not count, nor how a character is encoded.
bool isSameName(std::string_view a, std::string_view b);

/// The installed application that a person means: by its id with or without ".desktop", its name, also in another
/// language, the class of its windows, the last part of its id, its program, also by the path of that. Case does not
/// count; what menus hide comes last. Of several with one name, the one that has a window open is meant, else the
/// first.
DesktopEntry const* entryNamed(DesktopEntries const& entries, std::string_view name,
                               std::vector<x11::OpenWindow> const& open);

/// The windows of an application, frontmost first, with its popups. Of one that is not installed, those whose class has
/// that name, or whose program is that file.
std::vector<x11::OpenWindow> windowsOf(std::vector<x11::OpenWindow> const& all, DesktopEntry const* entry,
                                       std::string_view name);
/// The window in front that is not a popup or a splash screen; none where there is none.
std::optional<x11::OpenWindow> frontWindow(std::vector<x11::OpenWindow> const& windows);

}
