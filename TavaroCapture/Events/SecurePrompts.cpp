#include <TavaroCapture/Events/Private/SecurePrompts.h>

#include <algorithm>
#include <string>

namespace tavaro {

namespace {

// Found anywhere in the class: these programs come in many variants (pinentry-gtk-2, lxqt-openssh-askpass …).
constexpr std::string_view parts[] = {"pinentry", "askpass",     "polkit",       "policykit",    "gcr-prompter",
                                      "kwallet",  "screensaver", "screenlock",   "light-locker", "xsecurelock",
                                      "i3lock",   "greeter",     "gnome-keyring"};
constexpr std::string_view wholes[] = {"xlock", "slock", "xlockmore", "physlock", "gksu", "gksudo", "kdesu", "kdesudo"};

bool names(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return std::any_of(std::begin(parts), std::end(parts),
                       [&](std::string_view part) { return lower.find(part) != std::string::npos; }) ||
           std::find(std::begin(wholes), std::end(wholes), lower) != std::end(wholes);
}

}

bool isSecurePrompt(std::string_view instance, std::string_view windowClass) {
    return names(instance) || names(windowClass);
}

}
