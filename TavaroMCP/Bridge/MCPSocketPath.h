#pragma once

#include <filesystem>

namespace tavaro {

/// Where the application of this user listens for agents.
std::filesystem::path mcpSocketPath();

}
