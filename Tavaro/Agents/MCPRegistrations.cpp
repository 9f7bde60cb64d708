#include <Tavaro/Agents/MCPRegistrations.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Records/JSONValue.h>

#include <fmt/format.h>

#include <string_view>

namespace tavaro {

namespace {

/// In double quotes. An interactive shell takes "!" for its history there, also behind a backslash.
std::string shellQuoted(std::string_view text) {
    std::string quoted = "\"";
    for (char const c : text) {
        if (std::string_view("\\\"$`").find(c) != std::string_view::npos) quoted += '\\';
        quoted += c == '!' ? R"("'!'")" : std::string(1, c);
    }
    return quoted + "\"";
}

}

std::string claudeCodeLine(std::filesystem::path const& server) {
    return fmt::format("claude mcp add tavaro -- {}", shellQuoted(server.string()));
}

std::string claudeDesktopConfiguration(std::filesystem::path const& server) {
    JSONValue const tavaro = JSONValue::Object{{"command", server.string()}};
    return encodeJSON(JSONValue(JSONValue::Object{{"mcpServers", JSONValue::Object{{"tavaro", tavaro}}}}));
}

}
