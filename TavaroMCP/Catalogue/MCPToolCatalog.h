#pragma once

#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMCP/Catalogue/MCPToolName.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What an agent reads of a tool before it calls it.
struct MCPTool {
    MCPToolName name = MCPToolName::status;
    std::string description;
    JSONValue inputSchema; // of its arguments; advice, which the tool checks again

    JSONValue listing() const;
};

/// Every tool that agents are offered. Any thread.
namespace toolCatalog {

/// In the order of their names' enumeration.
std::vector<MCPTool> const& all();
/// Null where no tool has exactly that name.
MCPTool const* named(std::string_view name);
/// {"tools": [listing, …]}
JSONValue listJSON();

}

}
