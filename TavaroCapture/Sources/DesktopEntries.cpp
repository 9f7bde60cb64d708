#include <TavaroCapture/Sources/DesktopEntries.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <vector>

namespace tavaro {

namespace {

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

std::vector<std::filesystem::path> entryFolders() {
    std::vector<std::filesystem::path> result{folders::applicationSupport() / "applications"};
    char const* const set = std::getenv("XDG_DATA_DIRS");
    std::string_view rest = set && *set ? set : "/usr/local/share:/usr/share";
    while (!rest.empty()) {
        auto const end = std::min(rest.find(':'), rest.size());
        if (end > 0) result.push_back(std::filesystem::path(rest.substr(0, end)) / "applications");
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return result;
}

/// Installed applications by what their windows may be called, in lower case.
using EntryIndex = std::map<std::string, ApplicationIdentity>;

void addEntry(std::filesystem::path const& file, EntryIndex& byClass, EntryIndex& byID) {
    auto const text = readWholeFile(file, 1 << 20);
    if (!text) return;
    auto const name = desktopEntryValue(*text, "Name");
    if (!name || desktopEntryValue(*text, "Type") != "Application") return;
    ApplicationIdentity const identity{file.stem().string(), *name};
    if (auto const startupClass = desktopEntryValue(*text, "StartupWMClass"))
        byClass.try_emplace(lowered(*startupClass), identity);
    std::string const id = lowered(identity.bundleID);
    byID.try_emplace(id, identity);
    if (auto const dot = id.rfind('.'); dot != std::string::npos) byID.try_emplace(id.substr(dot + 1), identity);
}

EntryIndex readEntries() {
    EntryIndex byClass;
    EntryIndex byID;
    for (auto const& folder : entryFolders()) {
        std::error_code ignored;
        for (auto const& entry : std::filesystem::directory_iterator(folder, ignored)) {
            if (entry.path().extension() != ".desktop") continue;
            try {
                addEntry(entry.path(), byClass, byID);
            } catch (FileError const&) {
                // An unreadable entry names no application; the window class does.
            }
        }
    }
    byClass.merge(byID); // what an entry says of its windows wins over what its file is called
    return byClass;
}

}

std::optional<std::string> desktopEntryValue(std::string_view entry, std::string_view key) {
    bool isMainGroup = false;
    while (!entry.empty()) {
        auto const end = std::min(entry.find('\n'), entry.size());
        std::string_view line = entry.substr(0, end);
        entry.remove_prefix(std::min(end + 1, entry.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.starts_with('[')) {
            isMainGroup = line == "[Desktop Entry]";
            continue;
        }
        if (!isMainGroup || !line.starts_with(key)) continue;
        auto const equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        std::string_view name = line.substr(0, equals);
        while (name.ends_with(' ')) name.remove_suffix(1);
        if (name != key) continue;
        std::string_view value = line.substr(equals + 1);
        while (value.starts_with(' ')) value.remove_prefix(1);
        return std::string(value);
    }
    return std::nullopt;
}

ApplicationIdentity identifyApplication(std::string const& instance, std::string const& windowClass,
                                        std::string const& fallback) {
    static EntryIndex const installed = readEntries();
    for (auto const& name : {windowClass, instance}) {
        auto const found = installed.find(lowered(name));
        if (!name.empty() && found != installed.end()) return found->second;
    }
    std::string const& own = !windowClass.empty() ? windowClass : instance;
    return own.empty() ? ApplicationIdentity{fallback, fallback} : ApplicationIdentity{own, own};
}

}
