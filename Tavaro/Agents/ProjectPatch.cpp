#include <Tavaro/Agents/Private/ProjectPatch.h>

namespace tavaro {

operations::Patch projectPatch(ToolArguments const& arguments) {
    auto const* const given = arguments.has("patch") ? arguments.find("patch")->as<JSONValue::Object>() : nullptr;
    if (!given) refuseArguments("patch must be a JSON object.");
    if (given->contains("cameraFaces")) {
        throw MCPToolError(MCPErrorCode::invalidPatch,
                           "\"cameraFaces\" is not a project field. Check get_project for the names.");
    }
    auto patch = *given;
    patch.erase("duration"); // follows from the timeline; a view that comes back changed has it, too
    return {patch};
}

}
