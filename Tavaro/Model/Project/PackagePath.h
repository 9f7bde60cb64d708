#pragma once

#include <filesystem>
#include <string_view>

namespace tavaro {

/// "NAME.recproj" with the ending added where it is missing.
std::filesystem::path packagePath(std::filesystem::path const& given);

/// Throws `FileError` when something lies at that place already, or when nothing can be made there.
void expectPlaceFor(std::filesystem::path const& package);

/// Where a project goes that nobody gave a place: the folder of unsaved projects, made when it is not there, under that
/// name or the first free one of "Name 2", "Name 3", …. Throws `FileError`.
std::filesystem::path unsavedPackagePath(std::string_view name);

}
