#include <TavaroMCP/Protocol/ToolResult.h>

#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>

#include <utility>
#include <vector>

namespace tavaro::toolResult {

namespace {

struct Block {
    std::string type = "text";
    std::optional<std::string> text, mimeType;
    std::optional<Data> data;

    static constexpr auto fields = std::tuple{field("type", &Block::type), field("text", &Block::text),
                                              field("mimeType", &Block::mimeType), field("data", &Block::data)};
};
static_assert(listsEveryField<Block>);

struct Result {
    std::vector<Block> content;
    bool isError = false;
    std::optional<JSONText> structuredContent;

    static constexpr auto fields = std::tuple{field("content", &Result::content), field("isError", &Result::isError),
                                              field("structuredContent", &Result::structuredContent)};
};
static_assert(listsEveryField<Result>);

Block textBlock(std::string_view text) { return {.text = std::string(text)}; }

JSONText textOf(Result const& result) { return JSONText::written(encodeJSON(result)); }

}

ToolResult ok(std::string_view summary, std::optional<JSONText> structured) {
    return {textOf({.content = {textBlock(summary)}, .structuredContent = std::move(structured)}), {}};
}

ToolResult image(Data png, std::string_view caption) {
    Block picture{.type = "image", .mimeType = "image/png", .data = std::move(png)};
    return {textOf({.content = {std::move(picture), textBlock(caption)}}), {}};
}

ToolResult failure(MCPErrorCode code, std::string_view message) {
    JSONText const structured(JSONValue::Object{{"code", nameOf(code)}, {"message", message}});
    return {textOf({.content = {textBlock(message)}, .isError = true, .structuredContent = structured}), code};
}

ToolResult unknownTool(std::string_view name) {
    constexpr std::size_t longest = 100;
    return failure(MCPErrorCode::notFound,
                   fmt::format("There is no tool \"{}\". Call tools/list for the names.", name.substr(0, longest)));
}

}
