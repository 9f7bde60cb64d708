#include <Tavaro/Agents/Private/ExportArguments.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Export/ExportPreset.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr ArgumentLimits sides{64, 7680}; // pixels
constexpr ArgumentLimits rates{1, 120};   // frames a second

std::optional<ExportContainer> containerIn(ToolArguments const& arguments) {
    auto const* const given = arguments.find("container");
    if (!given) return std::nullopt;
    auto const* const name = given->as<std::string>();
    auto const container = name ? enumNamed<ExportContainer>(*name) : std::nullopt;
    if (!container) refuseArguments("Unknown container.");
    return container;
}

std::optional<std::string> presetIn(ToolArguments const& arguments) {
    auto const id = arguments.text("preset");
    if (!id || ExportPreset::withID(*id)) return id;
    throw MCPToolError(MCPErrorCode::notFound,
                       fmt::format("There is no preset \"{}\". See list_export_presets.", excerpt(*id)));
}

std::optional<Size2> sizeIn(ToolArguments const& arguments) {
    auto const width = arguments.integer("width", sides), height = arguments.integer("height", sides);
    if (width.has_value() != height.has_value()) refuseArguments("width and height go together.");
    return width ? std::optional(Size2{*width, *height}) : std::nullopt;
}

}

ExportChoices exportChoices(ToolArguments const& arguments) {
    ExportChoices choices;
    choices.container = containerIn(arguments);
    choices.preset = presetIn(arguments);
    choices.size = sizeIn(arguments);
    choices.fps = arguments.integer("fps", rates);
    choices.codec = arguments.oneOf<VideoCodecChoice>("codec");
    choices.output = arguments.text("output_path");
    return choices;
}

}
