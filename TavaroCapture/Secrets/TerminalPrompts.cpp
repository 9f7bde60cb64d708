#include <TavaroCapture/Secrets/Private/TerminalPrompts.h>

#include <TavaroCapture/Events/Private/SecurePrompts.h>
#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr double lookSeconds = 0.25;

struct Process {
    std::string name; // 15 characters at most
    int id = 0;
    int parent = 0;
    int group = 0;
    int terminal = 0;   // of /dev/pts; below 0: none
    int foreground = 0; // the group that has the terminal
};

/// /dev/pts has the device numbers 136:0 to 143:2²⁰−1.
int terminalNumber(int device) {
    constexpr int first = 136, last = 143;
    int const major = device >> 8 & 0xfff;
    int const minor = (device & 0xff) | (device >> 12 & 0xfff00);
    return major < first || major > last ? -1 : (major - first) * 256 + minor;
}

/// "4711 (name) S 1 4711 4711 34816 4712 …"
std::optional<Process> parseProcess(std::string_view text) {
    auto const open = text.find('('), close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos) return std::nullopt;
    Process result{.name = std::string(text.substr(open + 1, close - open - 1))};
    int device = 0;
    if (std::sscanf(std::string(text).c_str(), "%d", &result.id) != 1 ||
        std::sscanf(std::string(text.substr(close + 1)).c_str(), " %*c %d %d %*d %d %d", &result.parent, &result.group,
                    &device, &result.foreground) != 4)
        return std::nullopt;
    result.terminal = terminalNumber(device);
    return result;
}

std::vector<Process> runningProcesses(fs::path const& folder) {
    std::vector<Process> result;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(folder, ignored)) {
        if (!std::isdigit(static_cast<unsigned char>(entry.path().filename().string().front()))) continue;
        std::array<std::byte, 512> bytes{};
        auto const file = FileDescriptor::open(entry.path() / "stat", FileDescriptor::Opening::reading);
        auto const count = file.isOpen() ? file.read(bytes) : 0;
        if (count <= 0) continue; // it has ended
        auto const* const text = reinterpret_cast<char const*>(bytes.data());
        if (auto process = parseProcess({text, static_cast<std::size_t>(count)})) result.push_back(std::move(*process));
    }
    return result;
}

/// Those that the process started, and that those started.
std::vector<Process const*> startedBy(int process, std::vector<Process> const& all) {
    std::multimap<int, Process const*> byParent;
    for (auto const& one : all) byParent.emplace(one.parent, &one);
    std::vector<Process const*> result;
    auto const add = [&](int parent) {
        for (auto [at, end] = byParent.equal_range(parent); at != end; ++at) result.push_back(at->second);
    };
    add(process);
    for (std::size_t i = 0; i < result.size(); ++i) add(result[i]->id);
    return result;
}

bool isPinentry(Process const& process) { return process.name.starts_with("pinentry-"); }

/// Programs whose prompts show a star for each key: sudo, until it runs what it is to run; a window for terminals.
bool showsStars(Process const& process, std::vector<Process> const& all) {
    if (isPinentry(process)) return true;
    return process.name == "sudo" && process.group == process.foreground &&
           std::ranges::none_of(all, [&](Process const& other) { return other.parent == process.id; });
}

/// Of this user: others' show their windows elsewhere.
bool isPromptProgram(Process const& process, fs::path const& processes) {
    struct stat status {};
    auto const folder = processes / std::to_string(process.id);
    bool const isOwn = ::stat(folder.c_str(), &status) == 0 && status.st_uid == ::getuid();
    return isOwn && isSecureProgram(process.name, process.id);
}

bool asks(TerminalPrompts::Terminal const& terminal) {
    // Without becoming its reader: that would be a reason to be stopped.
    FileDescriptor const file(
        ::open(fmt::format("/dev/pts/{}", terminal.number).c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    termios settings{};
    if (!file.isOpen() || ::tcgetattr(file.get(), &settings) != 0) return false;
    bool const isSilent = (settings.c_lflag & ECHO) == 0, takesLines = (settings.c_lflag & ICANON) != 0;
    return isSilent && (takesLines || terminal.isOfPrompt);
}

}

void TerminalPrompts::lookForTerminals(int process) {
    double const now = mediaClockNow();
    if (process == process_ && now - lookedAt_ < lookSeconds) return;
    process_ = process;
    lookedAt_ = now;
    terminals_.clear();
    auto const all = runningProcesses(processes_);
    auto const itself = std::ranges::find(all, process, &Process::id);
    int const own = itself == all.end() ? -1 : itself->terminal; // the one that it was started from
    // A window for terminals belongs to a program of its own, which no terminal started.
    bool const isPinentryOpen = std::ranges::any_of(all, isPinentry);
    for (auto const* const one : startedBy(process, all))
        if (one->terminal >= 0 && one->terminal != own)
            noteTerminal(one->terminal, isPinentryOpen || showsStars(*one, all));
}

void TerminalPrompts::noteTerminal(int number, bool isOfPrompt) {
    auto const known = std::ranges::find(terminals_, number, &Terminal::number);
    auto& terminal = known != terminals_.end() ? *known : terminals_.emplace_back(Terminal{number});
    terminal.isOfPrompt = terminal.isOfPrompt || isOfPrompt;
}

void TerminalPrompts::lookEverywhere() {
    double const now = mediaClockNow();
    constexpr int everywhere = -1;
    if (process_ == everywhere && now - lookedAt_ < lookSeconds) return;
    process_ = everywhere;
    lookedAt_ = now;
    terminals_.clear();
    auto const all = runningProcesses(processes_);
    isPromptOpen_ = std::ranges::any_of(all, [&](Process const& one) { return isPromptProgram(one, processes_); });
    bool const isPinentryOpen = std::ranges::any_of(all, isPinentry);
    for (auto const& one : all)
        if (one.terminal >= 0) noteTerminal(one.terminal, isPinentryOpen || showsStars(one, all));
}

bool TerminalPrompts::anyoneAsks() {
    lookEverywhere();
    return isPromptOpen_ || std::ranges::any_of(terminals_, asks);
}

bool TerminalPrompts::asksForSecret(int process) {
    if (process <= 0) return false;
    lookForTerminals(process);
    return std::ranges::any_of(terminals_, asks);
}

}
