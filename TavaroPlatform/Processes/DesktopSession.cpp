#include <TavaroPlatform/Processes/DesktopSession.h>

#include <TavaroCore/Files/FileDescriptor.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 8> wanted{"DISPLAY",
                                                 "WAYLAND_DISPLAY",
                                                 "XAUTHORITY",
                                                 "XDG_RUNTIME_DIR",
                                                 "DBUS_SESSION_BUS_ADDRESS",
                                                 "XDG_CURRENT_DESKTOP",
                                                 "XDG_SESSION_TYPE",
                                                 "XDG_SESSION_ID"};

using Variables = std::map<std::string, std::string, std::less<>>;

bool isNumber(std::string const& text) {
    return !text.empty() && std::ranges::all_of(text, [](unsigned char c) { return std::isdigit(c); });
}

bool isOwn(fs::path const& process) {
    struct stat status {};
    return ::stat(process.c_str(), &status) == 0 && status.st_uid == ::geteuid();
}

std::string contents(fs::path const& file) {
    auto const opened = FileDescriptor::open(file, FileDescriptor::Opening::reading);
    std::string text;
    std::array<char, 1 << 14> piece;
    while (opened.isOpen()) {
        auto const count = opened.read(std::as_writable_bytes(std::span(piece)));
        if (count <= 0) break;
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return text;
}

/// What a process was started with, of what is wanted.
Variables variablesOf(fs::path const& process) {
    auto const text = contents(process / "environ");
    Variables found;
    for (std::string_view rest = text; !rest.empty();) {
        auto const line = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        auto const name = line.substr(0, line.find('='));
        if (name.size() + 1 < line.size() && std::ranges::find(wanted, name) != wanted.end())
            found.emplace(name, line.substr(name.size() + 1));
    }
    return found;
}

std::string_view valueOf(Variables const& variables, std::string_view name) {
    auto const found = variables.find(name);
    return found == variables.end() ? std::string_view() : std::string_view(found->second);
}

/// Displays of programs that are gone leave processes behind that still name them.
bool isThere(Variables const& variables) {
    std::error_code ignored;
    if (auto const wayland = valueOf(variables, "WAYLAND_DISPLAY"); !wayland.empty())
        if (fs::exists(fs::path(valueOf(variables, "XDG_RUNTIME_DIR")) / wayland, ignored)) return true;
    auto const display = valueOf(variables, "DISPLAY");
    if (!display.starts_with(':')) return !display.empty();
    auto const number = display.substr(1, display.find('.') - 1);
    return fs::exists(fs::path("/tmp/.X11-unix/X").concat(number), ignored);
}

struct Desktop {
    Variables variables; // of the process that tells most of it
    int programs = 0;

    auto rank() const { return std::tuple(variables.contains("XDG_CURRENT_DESKTOP"), programs); }
};

}

std::vector<std::string> desktopSessionVariables(fs::path const& processes) {
    std::map<std::string, Desktop, std::less<>> desktops;
    std::error_code code;
    for (fs::directory_iterator each(processes, code), end; !code && each != end; each.increment(code)) {
        if (!isNumber(each->path().filename()) || !isOwn(each->path())) continue;
        auto variables = variablesOf(each->path());
        if (!isThere(variables)) continue;
        auto& desktop = desktops[std::string(valueOf(variables, "DISPLAY")) + ' ' +
                                 std::string(valueOf(variables, "WAYLAND_DISPLAY"))];
        ++desktop.programs;
        if (variables.size() > desktop.variables.size()) desktop.variables = std::move(variables);
    }
    auto const best = std::ranges::max_element(desktops, {}, [](auto const& each) { return each.second.rank(); });
    std::vector<std::string> lines;
    if (best == desktops.end()) return lines;
    for (auto const& [name, value] : best->second.variables) lines.push_back(name + '=' + value);
    return lines;
}

DesktopKind desktopKind() {
    auto const isSet = [](char const* name) {
        char const* const value = std::getenv(name);
        return value && *value;
    };
    if (isSet("WAYLAND_DISPLAY")) return DesktopKind::wayland;
    return isSet("DISPLAY") ? DesktopKind::x11 : DesktopKind::none;
}

}
