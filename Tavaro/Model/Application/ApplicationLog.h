#pragma once

#include <filesystem>

namespace tavaro {

/// From here on the process also logs into "tavaro.log" of that folder, which only the user can enter; old lines go
/// away after a few megabytes. What was typed never comes into a log. An application whose log cannot be written goes
/// on without.
void logInto(std::filesystem::path const& folder);

}
