#pragma once

#include <TavaroPlatform/Keychain/Secret.h>

namespace tavaro::commands {

/// The first line of the standard input. Where that is a terminal, it is asked for by `prompt` and not shown while it
/// is typed. Blanks around it are left out. Throws `Error` where Ctrl-C ends it, or it is longer than a secret.
Secret readSecret(char const* prompt);

}
