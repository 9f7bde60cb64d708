#pragma once

#include <string>

/// What the user's earlier answers are called by, so that the desktop does not ask again: in the preferences, one for
/// each source. A token is good once.
namespace tavaro::wayland::restoreTokens {

/// Empty: none.
std::string of(std::string const& source);
/// An empty token forgets it. One that cannot be written is forgotten, too: the desktop then asks once more.
void keep(std::string const& source, std::string const& token);

}
