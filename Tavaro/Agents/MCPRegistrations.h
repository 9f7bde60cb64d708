#pragma once

#include <filesystem>
#include <string>

/// How MCP clients are told of the server, ready to paste.
namespace tavaro {

/// A line for a shell, whatever is in the path.
std::string claudeCodeLine(std::filesystem::path const& server);
/// One line of JSON.
std::string claudeDesktopConfiguration(std::filesystem::path const& server);

}
