#include <TavaroAutomation/Applications/Private/ApplicationLookup.h>

#include <TavaroAutomation/Applications/Private/LaunchCommand.h>
#include <TavaroAutomation/Applications/Private/ProgramFile.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <tuple>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace tavaro {

namespace {

icu::UnicodeString folded(std::string_view text) {
    auto const result = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    UErrorCode code = U_ZERO_ERROR;
    return icu::Normalizer2::getNFKCCasefoldInstance(code)->normalize(result, code).trim();
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
    if (isProgramFile(name)) return startsOnly(entry, name) ? NameFit::program : NameFit::none;
    if (isSame(id, withoutEnding(name))) return NameFit::id;
    if (isSame(entry.identity.name, name)) return NameFit::name;
    if (std::ranges::any_of(entry.localizedNames, [&](auto const& each) { return isSame(each, name); }))
        return NameFit::localizedName;
    if (isSame(entry.startupClass, name)) return NameFit::windowClass;
    if (isSame(id.substr(id.rfind('.') + 1), name)) return NameFit::lastPart;
    return isSame(programNamed(entry.exec), name) ? NameFit::program : NameFit::none;
}

bool isOf(x11::OpenWindow const& window, DesktopEntry const& entry) {
    // The window of a terminal that an application runs in says that it is the terminal's.
    bool const isKnownByLaunch = window.launch.isOwn || !window.isOfInstalled();
    return window.application == entry.identity || (isKnownByLaunch && window.launch.entry == entry.identity.bundleID);
}

bool isOf(x11::OpenWindow const& window, DesktopEntry const* entry, std::string_view name) {
    if (entry) return isOf(window, *entry);
    if (isProgramFile(name)) return window.pid != 0 && runsFile(window.pid, name);
    auto const& names = window.windowClass;
    return isSame(window.application.name, name) || isSame(window.application.bundleID, withoutEnding(name)) ||
           isSame(names.name, name) || isSame(window.launch.entry, withoutEnding(name)) ||
           isSame(names.instance, name) || isSame(window.gtkApplicationID, name);
}

/// Whether the window may be of another application that shares its process: of an office suite, of a browser.
bool isOfOther(x11::OpenWindow const& window, DesktopEntry const* entry) {
    bool const isAskedByOther =
        entry && window.launch.isOwn && !window.launch.entry.empty() && window.launch.entry != entry->identity.bundleID;
    return window.isOfInstalled() || isAskedByOther;
}

/// The window that a dialog, or a dialog of that, belongs to; itself where it belongs to none.
x11::OpenWindow const& ownerOf(std::vector<x11::OpenWindow> const& all, x11::OpenWindow const& window) {
    constexpr int deepest = 8; // windows may belong to each other
    auto const* owner = &window;
    for (int depth = 0; depth < deepest; ++depth) {
        auto const next = std::ranges::find(all, owner->transientFor, &x11::OpenWindow::window);
        if (owner->transientFor == XCB_NONE || next == all.end()) break;
        owner = &*next;
    }
    return *owner;
}

}

bool isSameName(std::string_view a, std::string_view b) { return isSame(a, b); }

DesktopEntry const* entryNamed(DesktopEntries const& entries, std::string_view name,
                               std::vector<x11::OpenWindow> const& open) {
    DesktopEntry const* best = nullptr;
    std::tuple bestRank{NameFit::none, true, true};
    for (auto const& entry : entries.all()) {
        auto const fit = fitOf(entry, name);
        if (fit == NameFit::none) continue;
        bool const isOpen = std::ranges::any_of(open, [&](auto const& window) { return isOf(window, entry); });
        std::tuple const rank{fit, entry.isHidden, !isOpen};
        if (best && !(rank < bestRank)) continue;
        best = &entry;
        bestRank = rank;
    }
    return best;
}

std::vector<x11::OpenWindow> windowsOf(std::vector<x11::OpenWindow> const& all, DesktopEntry const* entry,
                                       std::string_view name) {
    std::set<int> processes;
    std::set<xcb_window_t> own;
    for (auto const& window : all) {
        if (window.isPopup || !isOf(window, entry, name)) continue;
        own.insert(window.window);
        if (window.pid != 0) processes.insert(window.pid);
    }
    std::vector<x11::OpenWindow> result;
    std::ranges::copy_if(all, std::back_inserter(result), [&](x11::OpenWindow const& window) {
        // Popups often have no class of their own.
        if (own.contains(window.window) || !processes.contains(window.pid)) return own.contains(window.window);
        if (window.isPopup) return true;
        auto const& owner = ownerOf(all, window);
        return own.contains(owner.window) || !isOfOther(owner, entry);
    });
    return result;
}

std::optional<x11::OpenWindow> frontWindow(std::vector<x11::OpenWindow> const& windows) {
    auto const isWindow = [](x11::OpenWindow const& window) { return !window.isPopup && !window.isSplash; };
    auto found = std::ranges::find_if(windows, [&](auto const& each) { return isWindow(each) && !each.isMinimized; });
    if (found == windows.end()) found = std::ranges::find_if(windows, isWindow);
    return found == windows.end() ? std::nullopt : std::optional(*found);
}

}
