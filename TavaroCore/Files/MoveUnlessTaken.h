#pragma once

#include <filesystem>

namespace tavaro {

/// Gives a file or a folder another name on the same disk, in one step. False when something has that name already, be
/// it a link that leads nowhere: of several who want one name, one gets it. Throws `FileError`.
[[nodiscard]] bool moveUnlessTaken(std::filesystem::path const& from, std::filesystem::path const& to);

}
