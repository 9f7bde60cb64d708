#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMCP/Catalogue/MCPToolName.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What is wrong with a script: "steps[2].tool: there is no tool “ui_clik”."
class ScriptError : public Error {
public:
    using Error::Error;
};

/// A call of a tool, or a pause.
struct ScriptStep {
    std::optional<MCPToolName> tool; // none: a pause
    JSONValue::Object arguments;     // with references in them
    double pause = 0;                // seconds
    std::string say;                 // for who watches; may be empty, as the next two
    std::string as;                  // what later steps call the result
    std::string save;                // the file that the result's picture becomes

    std::string name() const { return tool ? std::string(nameOf(*tool)) : "wait"; }
};

/// A list of tool calls, as JSON that a person can write:
///
///     {"note": "anything",
///      "steps": [{"say": "The recording starts", "tool": "start_recording", "arguments": {"target": {"app":
///      "gedit"}}},
///                {"wait": 1.5},
///                {"tool": "stop_recording", "as": "take"},
///                {"tool": "render_frame", "save": "one.png",
///                 "arguments": {"project_id": "${take.project_id}", "time": 1}}]}
///
/// A text "${take.project_id}" in the arguments is replaced by that member of an earlier step's result, with the type
/// that it has there; members of lists are numbers, from 0. "$${…}" is the text "${…}".
struct ToolScript {
    static constexpr double longestPause = 600;

    std::vector<ScriptStep> steps;

    /// Throws `ScriptError`, with the line where the text is no JSON, else with the path to what is wrong. Every
    /// reference in what it returns is to an earlier step.
    static ToolScript parse(std::string_view text);

    /// Results by the names that steps gave them.
    using Results = std::map<std::string, JSONValue, std::less<>>;
    /// The step's arguments with what its references mean. Throws `ScriptError` with the path in them where a result
    /// has no such member.
    JSONValue::Object arguments(std::size_t step, Results const& results) const;

    /// As people who watch it count steps: "3/5 ui_click".
    std::string titleOf(std::size_t step) const;
    bool uses(MCPToolName tool) const;
};

}
