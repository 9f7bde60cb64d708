#include <Tavaro/Agents/Private/ExportPaths.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMCP/Protocol/MCPToolError.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro::exportPaths {

namespace fs = std::filesystem;

namespace {

/// Also without what the file systems of other machines refuse.
std::string portableNamePart(std::string_view name) {
    auto part = fileNamePart(name);
    std::ranges::replace_if(
        part, [](char c) { return std::string_view("\\*?\"<>|").find(c) != std::string_view::npos; }, '-');
    return part;
}

std::string_view presetName(ExportSettings const& settings) {
    auto const* const preset = settings.presetID ? ExportPreset::withID(*settings.presetID) : nullptr;
    return preset ? std::string_view(preset->name) : "Custom";
}

}

fs::path given(std::string const& path) {
    if (fs::path(path).is_absolute()) return path;
    throw MCPToolError(MCPErrorCode::invalidArguments, "output_path must be an absolute path.");
}

std::string fileName(std::string_view project, ExportSettings const& settings) {
    return fmt::format("{} — {}.{}", portableNamePart(project), portableNamePart(presetName(settings)),
                       fileExtension(settings.container));
}

fs::path usual(DemoProject const& project, ExportSettings const& settings) {
    auto const folder = folders::movies() / "Tavaro" / "Exports";
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (failure) {
        throw MCPToolError(MCPErrorCode::failed,
                           fmt::format("Can't create {}: {}.", folder.string(), failure.message()));
    }
    return folder / fileName(project.name, settings);
}

}
