#include <TavaroAutomation/Applications/Private/LaunchCommand.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

std::optional<fs::path> fileOf(std::string const& program) {
    std::error_code code;
    if (fs::path(program).is_absolute())
        return fs::is_regular_file(program, code) ? std::optional<fs::path>(program) : std::nullopt;
    return findProgram(program);
}

/// Browsers, and programs that are made of one, draw their widgets themselves and keep quiet about them unless started
/// with a flag. Such have the browser's resources beside them.
bool isBrowser(fs::path const& file) {
    std::error_code code;
    auto const program = fs::canonical(file, code);
    for (auto const& name : {file.filename().string(), program.filename().string()}) {
        if (name.starts_with("chrom") || name.starts_with("google-chrome")) return true;
    }
    auto const hasResources = [&](fs::path const& folder) {
        return fs::exists(folder / "chrome_crashpad_handler", code) ||
               fs::exists(folder / "chrome_100_percent.pak", code);
    };
    auto const folder = program.parent_path();
    return hasResources(folder) || hasResources(folder.parent_path()); // a script that starts it may be in bin
}

/// The place of the program among the words of a command: after "env" and the variables that it sets.
std::size_t programPlace(std::vector<std::string> const& words) {
    if (fs::path(words.front()).filename() != "env") return 0;
    auto const program = std::find_if(words.begin() + 1, words.end(), [](std::string const& word) {
        return word.find('=') == std::string::npos && !word.starts_with('-');
    });
    return program == words.end() ? 0 : static_cast<std::size_t>(program - words.begin());
}

[[noreturn]] void failMissing(DesktopEntry const& entry, std::string const& program) {
    throw AutomationError(AutomationError::Kind::notStarted,
                          fmt::format("{} cannot be opened: its program {} is not installed.", entry.identity.name,
                                      program.empty() ? "is not named, or" : program));
}

fs::path terminalProgram(DesktopEntry const& entry) {
    for (auto const* const name : {"x-terminal-emulator", "xterm"}) {
        if (auto file = findProgram(name)) return *file;
    }
    failMissing(entry, "xterm");
}

/// Puts the program's file for its name, and the flag that it needs after it.
void findPrograms(std::vector<std::string>& words, DesktopEntry const& entry) {
    auto const place = programPlace(words);
    for (auto const each : {std::size_t{0}, place}) {
        auto const file = fileOf(words[each]);
        if (!file) failMissing(entry, words[each]);
        words[each] = file->string();
    }
    if (isBrowser(words[place]))
        words.insert(words.begin() + static_cast<std::ptrdiff_t>(place) + 1, "--force-renderer-accessibility");
}

std::vector<std::string> variablesFor(DesktopEntry const& entry, std::string const& display) {
    // Each toolkit reads its own; what is not asked for accessibility at its start is often silent for good.
    std::vector<std::string> result{"NO_AT_BRIDGE=0",
                                    "GTK_A11Y=atspi",
                                    "QT_ACCESSIBILITY=1",
                                    "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1",
                                    "GNOME_ACCESSIBILITY=1",
                                    "ACCESSIBILITY_ENABLED=1",
                                    "GIO_LAUNCHED_DESKTOP_FILE=" + entry.identity.bundleID + ".desktop"};
    fs::path const bridge = "/usr/share/java/java-atk-wrapper.jar";
    std::error_code code;
    if (fs::exists(bridge, code) && std::getenv("JAVA_TOOL_OPTIONS") == nullptr) {
        result.push_back("JAVA_TOOL_OPTIONS=-Djavax.accessibility.assistive_technologies=org.GNOME.Accessibility."
                         "AtkWrapper -Xbootclasspath/a:" +
                         bridge.string());
    }
    if (!display.empty()) result.push_back("DISPLAY=" + display);
    return result;
}

}

std::vector<std::string> wordsOfExec(std::string_view exec) {
    std::vector<std::string> words;
    std::string word;
    bool isQuoted = false, isWord = false;
    auto const end = [&] {
        if (isWord) words.push_back(std::exchange(word, {}));
        isWord = false;
    };
    for (std::size_t i = 0; i < exec.size(); ++i) {
        char const c = exec[i];
        bool const hasNext = i + 1 < exec.size();
        if (c == '"') {
            isQuoted = !isQuoted;
            isWord = true;
        } else if (isQuoted && c == '\\' && hasNext &&
                   std::string_view("\"`$\\").find(exec[i + 1]) != std::string_view::npos) {
            word += exec[++i];
        } else if (!isQuoted && (c == ' ' || c == '\t')) {
            end();
        } else if (c == '%' && hasNext) {
            // Files, links, icons and names that there are none of.
            if (exec[++i] == '%') word += '%', isWord = true;
        } else {
            word += c;
            isWord = true;
        }
    }
    end();
    return isQuoted ? std::vector<std::string>() : words;
}

DesktopEntry entryOfFile(fs::path const& file) {
    std::string quoted;
    for (char const c : file.string()) {
        if (std::string_view("\"`$\\").find(c) != std::string_view::npos) quoted += '\\';
        quoted += c == '%' ? "%%" : std::string(1, c);
    }
    auto const name = file.filename().string();
    return {.identity = {name, name}, .exec = '"' + quoted + '"'};
}

bool startsOnly(DesktopEntry const& entry, fs::path const& file) {
    auto const words = wordsOfExec(entry.exec);
    auto const program = words.size() == 1 ? fileOf(words.front()) : std::nullopt;
    std::error_code code;
    return program && fs::equivalent(*program, file, code);
}

LaunchCommand launchCommand(DesktopEntry const& entry, std::string const& display) {
    if (!entry.tryExec.empty() && !fileOf(entry.tryExec)) failMissing(entry, entry.tryExec);
    LaunchCommand command{.words = wordsOfExec(entry.exec), .variables = variablesFor(entry, display)};
    if (command.words.empty()) failMissing(entry, "");
    findPrograms(command.words, entry);
    if (entry.isInTerminal) command.words.insert(command.words.begin(), {terminalProgram(entry).string(), "-e"});
    if (!entry.folder.empty()) command.folder = entry.folder;
    return command;
}

}
