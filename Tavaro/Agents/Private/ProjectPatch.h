#pragma once

#include <Tavaro/Agents/Private/ToolArguments.h>
#include <Tavaro/Model/Operations/PatchOperations.h>

namespace tavaro {

/// The merge patch that an agent wants over the project as it sees it (`ProjectView`). Throws `MCPToolError`; which
/// fields there are and which values fit is found when it is applied.
operations::Patch projectPatch(ToolArguments const& arguments);

}
