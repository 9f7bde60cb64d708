#pragma once

#include <filesystem>

namespace tavaro {

/// Opens the user's file manager with that file chosen, or where there is none that can, its folder.
void showInFolder(std::filesystem::path const& file);

}
