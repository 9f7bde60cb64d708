#pragma once

#include <Tavaro/Agents/Private/ToolArguments.h>
#include <Tavaro/Model/Operations/Operation.h>

namespace tavaro {

struct DemoProject;

/// The edit of the timeline that an agent asks for, checked against the project as it is. Throws `MCPToolError`.
Operation timelineOp(ToolArguments const& arguments, DemoProject const& project);

}
