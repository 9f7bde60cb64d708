#include <TavaroMCP/Bridge/MCPSocketPath.h>

#include <TavaroPlatform/Folders/Folders.h>

namespace tavaro {

std::filesystem::path mcpSocketPath() { return folders::applicationSupport() / "Tavaro/mcp.sock"; }

}
