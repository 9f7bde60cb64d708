#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

/// The variables by which a program of this user reaches the desktop: its display, its bus and the like, as
/// "DISPLAY=:0". For programs that are started by others with hardly any, as many clients start theirs. They are those
/// of the programs on the desktop; with several desktops, of one that names itself such before one that is only a
/// display, and then of the one with the most programs. Empty where none runs. Costs about 20 µs a process of the user.
std::vector<std::string> desktopSessionVariables(std::filesystem::path const& processes = "/proc");

enum class DesktopKind { none, x11, wayland };

/// What this process shows its windows on. A Wayland desktop often has an X server too, for the windows of programs
/// that know no other.
DesktopKind desktopKind();
inline bool hasDisplay() { return desktopKind() != DesktopKind::none; }

}
