#include <TavaroMCP/Client/ToolScript.h>

#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace tavaro;

namespace {

std::string problemOf(std::string const& text) {
    try {
        ToolScript::parse(text);
        return "none";
    } catch (ScriptError const& error) {
        return error.what();
    }
}

/// A script whose first step is named "a" and whose second has these arguments.
ToolScript scriptWith(std::string const& arguments) {
    return ToolScript::parse(fmt::format(
        R"({{"steps": [{{"tool": "status", "as": "a"}}, {{"tool": "ui_keys", "arguments": {}}}]}})", arguments));
}

std::string const problemless = R"({"note": [1], "say": "A tour", "steps": [{"wait": 0.5, "note": 7, "say": "first"},
    {"tool": "status", "as": "a", "arguments": {"text": "${HOME}/x"}}, {"tool": "export", "save": "b.png"}]})";

}

TEST(ToolScript, whatIsWrongIsSaidWithItsPlace) {
    struct Case {
        std::string text, problem;
    };
    std::vector<Case> const cases{
        {"", "The script cannot be read: the text is empty."},
        {"\xff", "The script cannot be read: the text is not valid UTF-8."},
        {"{\n \"steps\": [\n  {\"wait\": 1},,\n ]}", "Line 3: "},
        {R"({"steps": []} {})", "Line 1: "},
        {"[]", "A script is a JSON object with “steps”."},
        {"{}", "steps: expected a list of steps."},
        {R"({"steps": [], "step": 1})", "step: no script has a member of that name."},
        {R"({"steps": [7]})", "steps[0]: a step is an object."},
        {R"({"steps": [{}]})", "steps[0]: a step has either a “tool” or a “wait”."},
        {R"({"steps": [{"tool": "status", "wait": 1}]})", "steps[0]: a step has either a “tool” or a “wait”."},
        {R"({"steps": [{"wait": 1}, {"wait": -1}]})", "steps[1].wait: expected seconds from 0 to 600."},
        {R"({"steps": [{"wait": "1"}]})", "steps[0].wait: expected seconds from 0 to 600."},
        {R"({"steps": [{"wait": 1, "as": "a"}]})", "steps[0].as: no step has a member of that name."},
        {R"({"steps": [{"tool": "ui_clik"}]})", "steps[0].tool: there is no tool “ui_clik”."},
        {R"({"steps": [{"tool": 3}]})", "steps[0].tool: expected a text."},
        {R"({"steps": [{"tool": "status", "argumants": {}}]})",
         "steps[0].argumants: no step has a member of that name."},
        {R"({"steps": [{"tool": "status", "arguments": []}]})", "steps[0].arguments: expected an object."},
        {R"({"steps": [{"tool": "status", "as": "a.b"}]})", "steps[0].as: a name has neither dots nor braces."},
        {R"({"steps": [{"tool": "status", "as": "a"}, {"tool": "status", "as": "a"}]})",
         "steps[1].as: an earlier step has that name."},
        {R"({"steps": [{"tool": "status", "as": "a", "arguments": {"x": [{"y": "${a.b}"}]}}]})",
         "steps[0].arguments.x[0].y: no earlier step has its result “as” “a”; a text that only looks so begins with "
         "$${."},
        {problemless, "none"},
    };
    for (auto const& [text, problem] : cases) {
        auto const found = problemOf(text);
        bool const isBeginning = problem.ends_with(": ");
        EXPECT_EQ(isBeginning ? found.substr(0, problem.size()) : found, problem) << text;
    }
    EXPECT_NE(problemOf(std::string(100, '[') + std::string(100, ']')).find("too deep"), std::string::npos);
}

TEST(ToolScript, referencesBecomeWhatEarlierResultsHoldWithItsType) {
    ToolScript::Results const results{
        {"a", JSONValue::parse(R"({"id": "P1", "size": [{"w": 3}, 4.5], "on": true, "none": null, "": {"": 1}})")}};
    struct Case {
        std::string arguments, meaning;
    };
    std::vector<Case> const cases{
        {R"({"x":"${a.id}"})", R"({"x":"P1"})"},
        {R"({"x":[{"y":"${a.size.0.w}"},"${a.size.1}"]})", R"({"x":[{"y":3},4.5]})"},
        {R"({"x":"${a.on}","y":"${a.none}"})", R"({"x":true,"y":null})"},
        {R"({"x":"${a.size}"})", R"({"x":[{"w":3},4.5]})"},
        {R"({"x":"${a..}"})", R"({"x":1})"},
        {R"({"${a.id}":"$${a.id}"})", R"({"${a.id}":"${a.id}"})"},
        {R"({"x":"is ${a.id}","y":"${a.id","z":"$$","n":2})", R"({"n":2,"x":"is ${a.id}","y":"${a.id","z":"$$"})"},
    };
    for (auto const& [arguments, meaning] : cases)
        EXPECT_EQ(encodeJSON(JSONValue(scriptWith(arguments).arguments(1, results))), meaning) << arguments;
    for (auto const* const missing : {"${a.size.2}", "${a.size.-1}", "${a.id.0}", "${a.ID}", "${a.size.1x}"}) {
        auto const script = scriptWith(fmt::format(R"({{"x": "{}"}})", missing));
        EXPECT_THROW(static_cast<void>(script.arguments(1, results)), ScriptError) << missing;
    }
}
