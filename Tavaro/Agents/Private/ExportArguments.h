#pragma once

#include <Tavaro/Agents/Private/ToolArguments.h>
#include <Tavaro/Model/Exporting/ExportChoices.h>

namespace tavaro {

/// What an agent wants exported, its output as it was given. Throws `MCPToolError`.
ExportChoices exportChoices(ToolArguments const& arguments);

}
