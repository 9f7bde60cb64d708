#pragma once

#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/JSONText.h>
#include <TavaroMCP/Protocol/MCPToolError.h>

#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// What a client gets from a tool's call. Failures are results too.
struct ToolResult {
    JSONText json;                       // as the client reads it
    std::optional<MCPErrorCode> failure; // none where it did what it should

    operator JSONText const&() const { return json; }
    bool operator==(ToolResult const&) const = default;
};

namespace toolResult {

ToolResult ok(std::string_view summary, std::optional<JSONText> structured = {});
ToolResult image(Data png, std::string_view caption);
ToolResult failure(MCPErrorCode code, std::string_view message);
/// Of a name that no tool has.
ToolResult unknownTool(std::string_view name);

}

}
