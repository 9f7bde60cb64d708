#include <TavaroCapture/Events/Private/SecurePrompts.h>

#include <TavaroCore/Files/FileDescriptor.h>

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <string_view>

namespace tavaro {

namespace {

// Found anywhere in the class: these programs come in many variants (pinentry-gtk-2, lxqt-openssh-askpass …).
constexpr std::string_view parts[] = {"pinentry", "askpass",     "polkit",       "policykit",    "gcr-prompter",
                                      "kwallet",  "screensaver", "screenlock",   "light-locker", "xsecurelock",
                                      "i3lock",   "greeter",     "gnome-keyring"};
constexpr std::string_view wholes[] = {"xlock", "slock",   "xlockmore", "physlock", "gksu",  "gksudo",
                                       "kdesu", "kdesudo", "lxqt-sudo", "lxsu",     "lxsudo"};
// Dialogs of scripts, which ask for a password where their command says so.
constexpr std::string_view dialogs[] = {"zenity", "yad", "kdialog", "qarma", "matedialog"};
constexpr std::string_view hiding[] = {"--password", "--newpassword", "--add-password", "--hide-text"};

// Programs that run only as long as they ask, unlike agents that wait for their turn. The kernel cuts names to 15
// bytes.
constexpr std::string_view askers[] = {"pinentry", "askpass",     "gcr-prompter", "kscreenlocker_g",
                                       "swaylock", "gtklock",     "waylock",      "hyprlock",
                                       "i3lock",   "xsecurelock", "slock",        "lxqt-sudo"};

std::string lowered(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

bool isOneOf(std::string_view text, auto const& all) { return std::ranges::find(all, text) != std::end(all); }

bool isPrompt(std::string const& name) {
    return isOneOf(name, wholes) ||
           std::ranges::any_of(parts, [&](std::string_view part) { return name.find(part) != std::string::npos; });
}

bool hidesText(std::vector<std::string> const& command) {
    return std::ranges::any_of(command,
                               [](std::string_view word) { return isOneOf(word.substr(0, word.find('=')), hiding); });
}

}

bool isSecurePrompt(PromptWindow const& window) {
    auto const instance = lowered(window.instance), name = lowered(window.windowClass);
    bool const isDialog = isOneOf(instance, dialogs) || isOneOf(name, dialogs);
    return isPrompt(instance) || isPrompt(name) || (isDialog && hidesText(window.command));
}

std::vector<std::string> commandOf(int process) {
    std::vector<std::string> words;
    auto const file = FileDescriptor::open(fmt::format("/proc/{}/cmdline", process), FileDescriptor::Opening::reading);
    std::array<std::byte, 4096> bytes{};
    auto const count = process > 0 && file.isOpen() ? file.read(bytes) : 0;
    std::string_view rest(reinterpret_cast<char const*>(bytes.data()),
                          static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
    while (!rest.empty()) {
        auto const end = std::min(rest.find('\0'), rest.size());
        words.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return words;
}

bool isSecureProgram(std::string_view name, int process) {
    bool const isAsker =
        std::ranges::any_of(askers, [&](std::string_view asker) { return name.find(asker) != std::string_view::npos; });
    return isAsker || (isOneOf(name, dialogs) && hidesText(commandOf(process)));
}

}
