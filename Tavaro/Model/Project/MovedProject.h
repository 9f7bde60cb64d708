#pragma once

#include <filesystem>

namespace tavaro {

/// Gives a project another place, also on another disk, and the name of its new package. Edits by other programs wait
/// meanwhile, and those that have it open find it gone. Throws `FileError` where something has the place already; the
/// project is then where it was, whole.
void moveProject(std::filesystem::path const& from, std::filesystem::path const& to);

}
