#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace tavaro {

/// Removes a take's working folder with all it holds. It gets a name of its own first, in one step, so that whatever
/// ends the process leaves either the whole take or what `finishRemovals` knows to remove. Returns why that failed.
std::error_code removeWorkingFolder(std::filesystem::path const& directory);

/// "Could not remove …"
std::string removalProblem(std::filesystem::path const& directory, std::error_code reason);

/// Goes on with removals below the recordings folder that were interrupted. Returns sentences: what cannot be removed.
std::vector<std::string> finishRemovals(std::filesystem::path const& recordings);

}
