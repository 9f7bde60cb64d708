#pragma once

#include <filesystem>

namespace tavaro {

/// Where the working folder of a take goes: that folder, or the user's recordings where none is given. It is made when
/// it is not there. Throws `CaptureError` where it cannot be, or where its disk has no room for a take.
std::filesystem::path recordingsFolderFor(std::filesystem::path const& given);

}
