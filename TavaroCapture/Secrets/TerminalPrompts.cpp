#include <TavaroCapture/Secrets/Private/TerminalPrompts.h>

#include <TavaroCapture/Events/Private/SecurePrompts.h>
#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

using Terminal = TerminalPrompts::Terminal;

constexpr double lookSeconds = 0.25;

bool isPinentry(TerminalProcess const& process) { return process.name.starts_with("pinentry-"); }

/// Of this user: others' show their windows elsewhere.
bool isPromptProgram(TerminalProcess const& process, fs::path const& processes) {
    struct stat status {};
    auto const folder = processes / std::to_string(process.id);
    bool const isOwn = ::stat(folder.c_str(), &status) == 0 && status.st_uid == ::getuid();
    return isOwn && isSecureProgram(process.name, process.id);
}

bool asks(Terminal const& terminal) {
    // Without becoming its reader: that would be a reason to be stopped.
    FileDescriptor const file(
        ::open(fmt::format("/dev/pts/{}", terminal.number).c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    termios settings{};
    if (!file.isOpen() || ::tcgetattr(file.get(), &settings) != 0) return false;
    auto const keys = typingInto(settings, terminal.reader);
    return keys == Typing::secret || (keys == Typing::unclear && terminal.place == Terminal::Place::window);
}

}

bool TerminalPrompts::isDue(int process) {
    double const now = mediaClockNow();
    if (process == process_ && now - lookedAt_ < lookSeconds) return false;
    process_ = process;
    lookedAt_ = now;
    terminals_.clear();
    return true;
}

void TerminalPrompts::lookForTerminals(int process) {
    if (!isDue(process)) return;
    auto const all = runningProcesses(processes_);
    auto const itself = std::ranges::find(all, process, &TerminalProcess::id);
    int const own = itself == all.end() ? -1 : itself->terminal; // the one that it was started from
    isPinentryOpen_ = std::ranges::any_of(all, isPinentry);
    bool showsMore = false;
    for (auto const* const one : startedBy(process, all)) {
        if (one->terminal != own) noteTerminal(*one, Terminal::Place::window, all);
        showsMore = showsMore || (one->name == "tmux: client" && one->isInFront());
    }
    if (showsMore) lookInside(all);
}

/// The programs in its panes belong to a server of its own.
void TerminalPrompts::lookInside(std::vector<TerminalProcess> const& all) {
    for (auto const& server : all)
        if (server.name == "tmux: server")
            for (auto const* const one : startedBy(server.id, all)) noteTerminal(*one, Terminal::Place::anywhere, all);
}

void TerminalPrompts::noteTerminal(TerminalProcess const& process, Terminal::Place place,
                                   std::vector<TerminalProcess> const& all) {
    if (process.terminal < 0) return;
    auto known = std::ranges::find(terminals_, process.terminal, &Terminal::number);
    if (known == terminals_.end()) known = terminals_.insert(known, Terminal{process.terminal, place});
    if (isPinentryOpen_) known->reader = TerminalReader::prompt;
    // Of several programs in front, as in a pipe, one that asks counts most.
    if (process.isInFront()) known->reader = std::max(known->reader, readerOf(process, all));
}

void TerminalPrompts::lookEverywhere() {
    constexpr int everywhere = -1;
    if (!isDue(everywhere)) return;
    auto const all = runningProcesses(processes_);
    isPromptOpen_ =
        std::ranges::any_of(all, [&](TerminalProcess const& one) { return isPromptProgram(one, processes_); });
    isPinentryOpen_ = std::ranges::any_of(all, isPinentry);
    for (auto const& one : all) noteTerminal(one, Terminal::Place::anywhere, all);
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
