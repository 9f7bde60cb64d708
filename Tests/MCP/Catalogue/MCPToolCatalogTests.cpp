#include <TavaroMCP/Catalogue/MCPToolCatalog.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

/// Objects that say which properties they have are closed, and need only what they have.
void expectSound(JSONValue const& schema, std::string const& path) {
    ASSERT_TRUE(schema.find<std::string>("type")) << path;
    auto const* const minimum = schema.find("minimum");
    auto const* const maximum = schema.find("maximum");
    auto const valueOf = [](JSONValue const& bound) {
        auto const* const whole = bound.as<std::int64_t>();
        return whole ? static_cast<double>(*whole) : std::get<double>(bound.content);
    };
    if (minimum && maximum) {
        EXPECT_LT(valueOf(*minimum), valueOf(*maximum)) << path;
    }
    auto const* const properties = schema.find<JSONValue::Object>("properties");
    if (!properties) {
        auto const* const description = schema.find<std::string>("description");
        ASSERT_TRUE(description) << path;
        EXPECT_TRUE(description->ends_with(".")) << path << ": " << *description;
        return;
    }
    auto const* const open = schema.find<bool>("additionalProperties");
    EXPECT_TRUE(open && !*open) << path;
    auto const* const required = schema.find<JSONValue::Array>("required");
    ASSERT_TRUE(required) << path;
    for (auto const& name : *required) EXPECT_TRUE(properties->contains(std::get<std::string>(name.content))) << path;
    for (auto const& [name, property] : *properties) expectSound(property, path + "." + name);
}

}

TEST(MCPToolCatalog, everyToolIsListedOnceInOrderWithASoundSchema) {
    auto const listing = toolCatalog::listJSON();
    auto const& tools = *listing.find<JSONValue::Array>("tools");
    constexpr auto names = allCases<MCPToolName>();
    ASSERT_EQ(tools.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string const name(nameOf(names[i]));
        EXPECT_EQ(*tools[i].find<std::string>("name"), name);
        EXPECT_FALSE(tools[i].find<std::string>("description")->empty()) << name;
        EXPECT_TRUE(tools[i].find("inputSchema")->find("properties")) << name;
        expectSound(*tools[i].find("inputSchema"), name);
        ASSERT_TRUE(toolCatalog::named(name)) << name;
        EXPECT_EQ(toolCatalog::named(name)->name, names[i]);
    }
}

TEST(MCPToolCatalog, namesMatchExactly) {
    for (auto const* const name : {"Export", "export ", "", "exportFilm", "ui_open"})
        EXPECT_FALSE(toolCatalog::named(name)) << name;
}

}
