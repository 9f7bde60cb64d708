#pragma once

#include <string_view>

namespace tavaro {

/// Whether windows of this class ask for secrets: passphrase and password prompts, authorisation agents, screen locks
/// and log-in screens. No key is logged while one is mapped or in front. X does not tell which field of an ordinary
/// window is a password's, so what is typed into a web page's or a terminal's prompt is logged as any other key.
bool isSecurePrompt(std::string_view instance, std::string_view windowClass);

}
