#include <TavaroAutomation/Applications/Private/ApplicationLookup.h>

#include <algorithm>
#include <set>
#include <string>
#include <unicode/unistr.h>

namespace tavaro {

namespace {

icu::UnicodeString folded(std::string_view text) {
    auto result = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    return result.foldCase().trim();
}

bool isSame(std::string_view a, std::string_view b) { return !a.empty() && folded(a) == folded(b); }

std::string_view withoutEnding(std::string_view id) {
    constexpr std::string_view ending = ".desktop";
    if (id.ends_with(ending)) id.remove_suffix(ending.size());
    return id;
}

/// How well a name fits, the smaller the better.
enum class NameFit { id, name, localizedName, windowClass, lastPart, program, none };

NameFit fitOf(DesktopEntry const& entry, std::string_view name) {
    std::string_view const id = entry.identity.bundleID;
    if (isSame(id, withoutEnding(name))) return NameFit::id;
    if (isSame(entry.identity.name, name)) return NameFit::name;
    if (std::ranges::any_of(entry.localizedNames, [&](auto const& each) { return isSame(each, name); }))
        return NameFit::localizedName;
    if (isSame(entry.startupClass, name)) return NameFit::windowClass;
    if (isSame(id.substr(id.rfind('.') + 1), name)) return NameFit::lastPart;
    return isSame(programNamed(entry.exec), name) ? NameFit::program : NameFit::none;
}

bool isOf(x11::OpenWindow const& window, DesktopEntry const* entry, std::string_view name) {
    if (entry) return window.application == entry->identity || window.launchedAs == entry->identity.bundleID;
    auto const& names = window.windowClass;
    return isSame(window.application.name, name) || isSame(window.application.bundleID, withoutEnding(name)) ||
           isSame(names.name, name) || isSame(window.launchedAs, withoutEnding(name)) || isSame(names.instance, name) ||
           isSame(window.gtkApplicationID, name);
}

}

DesktopEntry const* entryNamed(DesktopEntries const& entries, std::string_view name) {
    DesktopEntry const* best = nullptr;
    std::pair bestFit{NameFit::none, true};
    for (auto const& entry : entries.all()) {
        std::pair const fit{fitOf(entry, name), entry.isHidden};
        if (fit.first == NameFit::none || (best && !(fit < bestFit))) continue;
        best = &entry;
        bestFit = fit;
    }
    return best;
}

std::vector<x11::OpenWindow> windowsOf(std::vector<x11::OpenWindow> const& all, DesktopEntry const* entry,
                                       std::string_view name) {
    std::set<int> processes;
    for (auto const& window : all) {
        if (!window.isPopup && window.pid != 0 && isOf(window, entry, name)) processes.insert(window.pid);
    }
    std::vector<x11::OpenWindow> result;
    for (auto const& window : all) {
        // Popups often have no class of their own.
        if (processes.contains(window.pid) || (!window.isPopup && isOf(window, entry, name))) result.push_back(window);
    }
    return result;
}

std::optional<x11::OpenWindow> frontWindow(std::vector<x11::OpenWindow> const& windows) {
    auto const isWindow = [](x11::OpenWindow const& window) { return !window.isPopup && !window.isSplash; };
    auto found = std::ranges::find_if(windows, [&](auto const& each) { return isWindow(each) && !each.isMinimized; });
    if (found == windows.end()) found = std::ranges::find_if(windows, isWindow);
    return found == windows.end() ? std::nullopt : std::optional(*found);
}

}
