#include <TavaroCapture/Secrets/Private/TerminalReader.h>

#include <TavaroCapture/Events/Private/SecurePrompts.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <termios.h>
#include <unistd.h>

namespace tavaro {

namespace {

/// Programs that set their terminal as a prompt would, or as some prompts do, and show what is typed. Those that use
/// curses, readline and their like are known by the terminal's settings, whatever they are called.
constexpr std::array<std::string_view, 48> drawing{
    "top",   "more",       "most",    "ssh",   "mosh-client", "telnet",    "script", "docker",  "podman",  "kubectl",
    "lxc",   "machinectl", "picocom", "socat", "dtach",       "abduco",    "zellij", "hx",      "helix",   "micro",
    "kak",   "joe",        "vi",      "fzf",   "sk",          "btop",      "btm",    "glances", "k9s",     "lazygit",
    "gitui", "lazydocker", "yazi",    "lf",    "broot",       "nu",        "elvish", "pwsh",    "ipython", "ipython3",
    "xonsh", "bpython",    "irb",     "iex",   "julia",       "asciinema", "mpv",    "mplayer"};
/// Their own prompts for what to do, without a program to run.
constexpr std::array<std::string_view, 5> interpreters{"node", "nodejs", "deno", "bun", "python"};
constexpr std::array<std::string_view, 2> dialogs{"dialog", "whiptail"};
constexpr std::array<std::string_view, 2> hidingBoxes{"--passwordbox", "--passwordform"};

bool isOneOf(std::string_view text, auto const& all) { return std::ranges::find(all, text) != all.end(); }

bool hasChild(TerminalProcess const& process, std::vector<TerminalProcess> const& all) {
    return std::ranges::any_of(all, [&](TerminalProcess const& other) { return other.parent == process.id; });
}

/// "node", "python3 -q", but no "node server.js".
bool runsNothing(TerminalProcess const& process) {
    auto const words = commandOf(process.id);
    return !words.empty() &&
           std::all_of(words.begin() + 1, words.end(), [](std::string_view word) { return word.starts_with('-'); });
}

bool hidesText(TerminalProcess const& process) {
    return std::ranges::any_of(commandOf(process.id), [](std::string_view word) { return isOneOf(word, hidingBoxes); });
}

bool isInterpreter(std::string_view name) {
    return std::ranges::any_of(interpreters, [&](std::string_view known) { return name.starts_with(known); });
}

}

/// sudo shows stars until it runs what it is to run, and hands keys on from then on.
TerminalReader readerOf(TerminalProcess const& process, std::vector<TerminalProcess> const& all) {
    auto const& name = process.name;
    if (name.starts_with("pinentry-")) return TerminalReader::prompt;
    if (name == "sudo") return hasChild(process, all) ? TerminalReader::drawing : TerminalReader::prompt;
    if (isOneOf(name, dialogs)) return hidesText(process) ? TerminalReader::prompt : TerminalReader::drawing;
    bool const isDrawing = isOneOf(name, drawing) || (isInterpreter(name) && runsNothing(process));
    return isDrawing ? TerminalReader::drawing : TerminalReader::unknown;
}

/// Who draws on the whole screen ends no line by the terminal's help (curses, vim, tmux). Who edits a line takes the
/// key for a literal next character itself (readline, zsh, less), or the return key, while Ctrl-C stays the terminal's
/// (fish).
Typing typingInto(termios const& settings, TerminalReader reader) {
    auto const has = [](tcflag_t flags, tcflag_t flag) { return (flags & flag) != 0; };
    if (has(settings.c_lflag, ECHO)) return Typing::shown;
    if (has(settings.c_lflag, ICANON) || reader == TerminalReader::prompt) return Typing::secret;
    bool const endsLines = has(settings.c_oflag, ONLCR);
    bool const takesLiterals = settings.c_cc[VLNEXT] == _POSIX_VDISABLE;
    bool const takesReturn = !has(settings.c_iflag, ICRNL);
    if (!endsLines || takesLiterals || reader == TerminalReader::drawing) return Typing::shown;
    if (takesReturn && has(settings.c_lflag, ISIG)) return Typing::shown;
    return takesReturn ? Typing::unclear : Typing::secret;
}

}
