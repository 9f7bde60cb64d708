#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroMCP/Protocol/MCPToolError.h>

#include <fmt/format.h>

#include <string>

namespace tavaro {

/// "code: sentence" of the refusal that the work ends with; empty without one.
template<class Work> std::string refusal(Work work) {
    try {
        work();
        return {};
    } catch (MCPToolError const& error) {
        return fmt::format("{}: {}", nameOf(error.code), error.what());
    }
}

}
