#include <TavaroMCP/Protocol/ToolResult.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro::toolResult {

namespace {

JSONValue textBlock(std::string_view text) { return JSONValue::Object{{"type", "text"}, {"text", text}}; }

JSONValue::Object withText(std::string_view text, bool isError) {
    JSONValue::Array content;
    content.push_back(textBlock(text));
    return {{"content", std::move(content)}, {"isError", isError}};
}

}

JSONValue ok(std::string_view summary, std::optional<JSONValue::Object> structured) {
    auto result = withText(summary, false);
    if (structured) result.emplace("structuredContent", *std::move(structured));
    return result;
}

JSONValue image(Data const& png, std::string_view caption) {
    JSONValue::Array content;
    content.push_back(JSONValue::Object{{"type", "image"}, {"mimeType", "image/png"}, {"data", png.base64()}});
    content.push_back(textBlock(caption));
    return JSONValue::Object{{"content", std::move(content)}, {"isError", false}};
}

JSONValue failure(MCPErrorCode code, std::string_view message) {
    auto result = withText(message, true);
    result.emplace("structuredContent", JSONValue::Object{{"code", nameOf(code)}, {"message", message}});
    return result;
}

JSONValue unknownTool(std::string_view name) {
    constexpr std::size_t longest = 100;
    return failure(MCPErrorCode::notFound,
                   fmt::format("There is no tool \"{}\". Call tools/list for the names.", name.substr(0, longest)));
}

}
