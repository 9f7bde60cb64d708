#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct PromptWindow {
    std::string instance; // the first word of its class
    std::string windowClass;
    std::vector<std::string> command; // of its program; empty where that is unknown
};

/// Whether a window is known to ask for secrets: passphrase and password prompts, authorisation agents, screen locks
/// and log-in screens, and dialogs that a script shows for a password. No key is logged while one is mapped or in
/// front.
bool isSecurePrompt(PromptWindow const& window);

/// The same by a running program alone, for desktops that do not tell of windows.
bool isSecureProgram(std::string_view name, int process);

/// The words of a process's command; empty where it has ended or is another user's.
std::vector<std::string> commandOf(int process);

}
