#pragma once

#include <TavaroCore/Export/ExportSettings.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace tavaro {

struct DemoProject;

/// Where an agent's export goes. A file that has the name already stays: the export then takes a free one beside it.
namespace exportPaths {

/// The path that was given. Throws `MCPToolError` where it is not absolute.
std::filesystem::path given(std::string const& path);

/// "<project> — <preset>.<ext>" with what cannot be in a file's name replaced; "Custom" for settings of no preset.
std::string fileName(std::string_view project, ExportSettings const& settings);

/// The usual path of such an export. Makes the folder; throws `MCPToolError` where it cannot.
std::filesystem::path usual(DemoProject const& project, ExportSettings const& settings);

}

}
