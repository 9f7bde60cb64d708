#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string>
#include <string_view>

namespace tavaro {

enum class MCPErrorCode {
    invalidArguments,
    permissionMissing, // the system refuses a device or a portal
    consentDenied,     // by the user, to this client
    mcpDisabled,
    busy,
    notRecording,
    notFound,
    invalidPatch,
    needsVoiceKey,
    appUnreachable,
    interrupted, // the application closed the connection during the call
    failed,
};

constexpr std::array<std::string_view, 12> namesOf(MCPErrorCode) {
    return {
        "invalid_arguments", "permission_missing", "consent_denied",  "mcp_disabled",    "busy",        "not_recording",
        "not_found",         "invalid_patch",      "needs_voice_key", "app_unreachable", "interrupted", "failed"};
}

/// Why a tool's call failed. The sentence is for the agent, and names the next step where there is one.
class MCPToolError : public Error {
public:
    MCPToolError(MCPErrorCode code, std::string const& sentence) : Error(sentence), code(code) {}

    static MCPToolError interrupted() { return {MCPErrorCode::interrupted, "Tavaro closed the connection mid-call."}; }

    MCPErrorCode const code;
};

}
