#include <Tavaro/Agents/Private/ExportPaths.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMCP/Protocol/MCPToolError.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro::exportPaths {

namespace fs = std::filesystem;

namespace {

/// Also without what the file systems of other machines refuse. Short enough that the preset, a number and the ending
/// fit behind it.
std::string fileNamePart(std::string_view name) {
    constexpr std::size_t mostBytes = 180;
    auto part = excerpt(name, mostBytes);
    std::ranges::replace_if(
        part, [](char c) { return std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos; }, '-');
    auto const first = part.find_first_not_of(" \t");
    part.erase(0, first);
    part.erase(part.find_last_not_of(" \t") + 1);
    if (part.starts_with('.')) part.front() = '-';
    return part.empty() ? "Export" : part;
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
    return fmt::format("{} — {}.{}", fileNamePart(project), fileNamePart(presetName(settings)),
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
