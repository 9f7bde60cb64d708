#pragma once

#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMCP/Protocol/MCPToolError.h>

#include <optional>
#include <string>
#include <string_view>

/// What a client gets from a tool's call, as JSON. Failures are results too.
namespace tavaro::toolResult {

JSONValue ok(std::string_view summary, std::optional<JSONValue::Object> structured = {});
JSONValue image(Data const& png, std::string_view caption);
JSONValue failure(MCPErrorCode code, std::string_view message);
/// Of a name that no tool has.
JSONValue unknownTool(std::string_view name);

}
