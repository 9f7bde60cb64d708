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
    // A view that comes back changed has these, too: one follows from the timeline, the other from saving.
    patch.erase("duration");
    patch.erase("modifiedAt");
    return {patch};
}

}
