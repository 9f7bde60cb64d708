#pragma once

#include <Tavaro/Agents/Private/ToolArguments.h>

#include <TavaroMCP/Catalogue/MCPToolName.h>

namespace tavaro {

/// Throws `MCPToolError` for the first argument that a tool for other applications cannot use.
void expectUIArguments(MCPToolName tool, ToolArguments const& arguments);

}
