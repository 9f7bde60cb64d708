#include <TavaroCapture/Sources/DesktopEntries.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <set>

namespace tavaro {

namespace {

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

/// "\s", "\n", "\t", "\r" and "\\" in a value.
std::string unescaped(std::string_view value) {
    constexpr std::array<std::pair<char, char>, 5> escapes{
        {{'s', ' '}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'\\', '\\'}}};
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        auto const* const known =
            value[i] == '\\' && i + 1 < value.size()
                ? std::ranges::find(escapes, value[i + 1], [](auto const& each) { return each.first; })
                : escapes.end();
        if (known == escapes.end()) {
            result += value[i];
        } else {
            result += known->second;
            ++i;
        }
    }
    return result;
}

std::string_view trimmed(std::string_view text) {
    while (text.starts_with(' ') || text.starts_with('\t')) text.remove_prefix(1);
    while (text.ends_with(' ') || text.ends_with('\t') || text.ends_with('\r')) text.remove_suffix(1);
    return text;
}

/// "kde4/kcalc.desktop" in the folder of entries is "kde4-kcalc".
std::string idOf(std::filesystem::path const& file, std::filesystem::path const& folder) {
    auto id = file.lexically_relative(folder).replace_extension().generic_string();
    std::ranges::replace(id, '/', '-');
    return id;
}

constexpr std::size_t longestEntry = 1U << 20;

/// What runs programs of others, in versions: "python3.11".
bool isRunner(std::string_view program) {
    constexpr std::array<std::string_view, 8> runners{"env",  "sh",   "bash",    "java",
                                                      "perl", "snap", "flatpak", "gapplication"};
    return program.starts_with("python") || std::ranges::find(runners, program) != runners.end();
}

}

std::map<std::string, std::string> desktopEntryValues(std::string_view entry) {
    std::map<std::string, std::string> result;
    bool isMainGroup = false;
    while (!entry.empty()) {
        auto const end = std::min(entry.find('\n'), entry.size());
        auto const line = trimmed(entry.substr(0, end));
        entry.remove_prefix(std::min(end + 1, entry.size()));
        if (line.starts_with('[')) isMainGroup = line == "[Desktop Entry]";
        auto const equals = line.find('=');
        if (!isMainGroup || line.starts_with('#') || line.starts_with('[') || equals == std::string_view::npos)
            continue;
        result.try_emplace(std::string(trimmed(line.substr(0, equals))), unescaped(trimmed(line.substr(equals + 1))));
    }
    return result;
}

std::optional<DesktopEntry> parseDesktopEntry(std::string_view entry, std::string const& id) {
    auto const values = desktopEntryValues(entry);
    auto const value = [&](char const* key) {
        auto const found = values.find(key);
        return found == values.end() ? std::string() : found->second;
    };
    if (value("Type") != "Application" || value("Name").empty() || value("Hidden") == "true") return std::nullopt;
    DesktopEntry result{.identity = {id, value("Name")},
                        .startupClass = value("StartupWMClass"),
                        .exec = value("Exec"),
                        .tryExec = value("TryExec"),
                        .folder = value("Path"),
                        .isInTerminal = value("Terminal") == "true",
                        .isHidden = value("NoDisplay") == "true"};
    for (auto const& [key, text] : values) {
        if (key.starts_with("Name[")) result.localizedNames.push_back(text);
    }
    return result;
}

std::string programNamed(std::string_view exec) {
    exec = trimmed(exec);
    bool const isQuoted = exec.starts_with('"');
    if (isQuoted) exec.remove_prefix(1);
    auto const path = exec.substr(0, exec.find(isQuoted ? '"' : ' '));
    auto const name = path.substr(path.rfind('/') + 1);
    return isRunner(name) ? std::string() : std::string(name);
}

DesktopEntries::DesktopEntries(std::vector<std::filesystem::path> const& folders) {
    namespace fs = std::filesystem;
    std::set<std::string> seen;
    for (auto const& folder : folders) {
        std::error_code code;
        for (auto file = fs::recursive_directory_iterator(folder, code);
             !code && file != fs::recursive_directory_iterator(); file.increment(code)) {
            auto const id = idOf(file->path(), folder);
            if (file->path().extension() != ".desktop" || !seen.insert(id).second) continue;
            try {
                auto const text = readWholeFile(file->path(), longestEntry);
                if (auto entry = text ? parseDesktopEntry(*text, id) : std::nullopt) add(std::move(*entry));
            } catch (FileError const&) {
                // An unreadable entry names no application; the window class does.
            }
        }
    }
    addPrograms();
}

std::vector<std::filesystem::path> DesktopEntries::usualFolders() {
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

void DesktopEntries::add(DesktopEntry entry) {
    auto const place = entries_.size();
    auto const id = lowered(entry.identity.bundleID);
    byID_.try_emplace(id, place);
    if (auto const dot = id.rfind('.'); dot != std::string::npos) byLastPart_.try_emplace(id.substr(dot + 1), place);
    if (!entry.startupClass.empty()) byClass_.try_emplace(lowered(entry.startupClass), place);
    byName_.try_emplace(lowered(entry.identity.name), place);
    entries_.push_back(std::move(entry));
}

void DesktopEntries::addPrograms() {
    std::set<std::string> several;
    for (std::size_t place = 0; place < entries_.size(); ++place) {
        auto const program = lowered(programNamed(entries_[place].exec));
        if (!program.empty() && !byProgram_.try_emplace(program, place).second) several.insert(program);
    }
    for (auto const& program : several) byProgram_.erase(program);
}

DesktopEntry const* DesktopEntries::in(Index const& index, std::string const& key) const {
    auto const found = key.empty() ? index.end() : index.find(lowered(key));
    return found == index.end() ? nullptr : &entries_[found->second];
}

DesktopEntry const* DesktopEntries::ownerOf(WindowOwner const& window) const {
    if (auto const* const entry = in(byID_, window.gtkApplicationID)) return entry;
    for (auto const* const index : {&byClass_, &byID_, &byLastPart_, &byProgram_}) {
        for (auto const& name : {window.windowClass, window.instance}) {
            if (auto const* const entry = in(*index, name)) return entry;
        }
    }
    if (auto const* const entry = in(byProgram_, window.program)) return entry;
    return in(byName_, window.windowClass);
}

}
