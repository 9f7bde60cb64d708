#include "Refusal.h"

#include <Tavaro/Agents/UIArguments.h>

#include <gtest/gtest.h>

#include <limits>

using namespace tavaro;

namespace {

JSONValue::Object given(std::string const& arguments) {
    return std::get<JSONValue::Object>(JSONValue::parse(arguments).content);
}

template<class Read> std::string refused(Read read, std::string const& arguments) {
    auto const text = refusal([&] { read(given(arguments)); });
    std::string const code = "invalid_arguments: ";
    return text.starts_with(code) ? text.substr(code.size()) : text;
}

}

TEST(UIArguments, sayWhichOneCannotBeUsed) {
    using namespace uiArguments;
    auto const* const needsApp = "app is required: its name, e.g. \"Mossfile\", or bundle id.";
    EXPECT_EQ(refused(app, "{}"), needsApp);
    EXPECT_EQ(refused(elements, R"({"app":""})"), needsApp);
    EXPECT_EQ(refused(elements, R"({"app":"a","limit":0})"), "limit must be 1–1000.");
    auto const* const needsTarget = "Say what to click: title (with app), element (with app), or x and y.";
    for (auto const* const arguments :
         {"{}", R"({"title":"a"})", R"({"app":"a"})", R"({"element":"e1"})", R"({"app":"a","title":""})"})
        EXPECT_EQ(refused(click, arguments), needsTarget) << arguments;
    EXPECT_EQ(refused(click, R"({"x":1})"), "x and y go together.");
    EXPECT_EQ(refused(click, R"({"x":1,"y":1,"title":"a"})"), needsApp) << "it would be left out";
    EXPECT_EQ(refused(scroll, R"({"down":1,"element":"e1"})"), needsApp);
    auto const endless = std::numeric_limits<double>::infinity();
    EXPECT_THROW(click({{"x", endless}, {"y", 1.0}}), MCPToolError) << "as a command's option may be";
    EXPECT_EQ(refused(click, R"({"x":1,"y":1,"button":"middle"})"), "button must be left or right.");
    EXPECT_EQ(refused(click, R"({"x":1,"y":1,"count":4})"), "count must be 1–3.");
    EXPECT_EQ(refused(click, R"({"x":1,"y":1,"glide":6})"), "glide must be 0–5.");
    EXPECT_EQ(refused(scroll, R"({"x":1,"y":1})"), "Give down and/or right, in pixels.");
    EXPECT_EQ(refused(scroll, R"({"down":1,"y":1})"), "x and y go together.");
    EXPECT_EQ(refused(keys, "{}"), "Give text to type and/or keys to press.");
    EXPECT_EQ(refused(keys, R"({"text":"","keys":[]})"), "Give text to type and/or keys to press.");
    EXPECT_EQ(refused(keys, R"({"keys":["hyper+k"]})"),
              "Can't read the shortcut \"hyper+k\". Use e.g. cmd+shift+4, return, esc, left, f5.");
    EXPECT_EQ(refused(keys, R"({"keys":"return"})"), "keys must be a list of texts.");
    EXPECT_EQ(refused(screenshot, R"({"max_width":199})"), "max_width must be 200–3840.");
}

TEST(UIArguments, areReadWithTheirDefaults) {
    auto const click = uiArguments::click(given(R"({"app":"a","title":"t","role":"Row","count":2,"button":"right"})"));
    EXPECT_TRUE(click.target.isElement());
    EXPECT_EQ(click.target.role, "Row");
    EXPECT_EQ(click.count, 2);
    EXPECT_EQ(click.button, UIMouseButton::right);
    EXPECT_EQ(click.glide, 0.7);
    EXPECT_EQ(click.hold, 1);
    auto const scroll = uiArguments::scroll(given(R"({"down":-5,"x":3,"y":4})"));
    EXPECT_EQ(scroll.target.point, (UIPoint{3, 4}));
    EXPECT_FALSE(scroll.target.isElement());
    EXPECT_EQ(scroll.glide, 0.5);
    auto const keys = uiArguments::keys(given(R"({"text":"a","keys":["cmd+s","return"]})"));
    EXPECT_EQ(keys.keys, (std::vector<std::string>{"cmd+s", "return"}));
    EXPECT_EQ(keys.hold, 0.5);
    EXPECT_EQ(uiArguments::elements(given(R"({"app":"a"})")).limit, 150U);
    EXPECT_EQ(uiArguments::screenshot(given("{}")).maxWidth, 1280);
}
