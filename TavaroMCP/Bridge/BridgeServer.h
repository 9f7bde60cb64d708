#pragma once

#include <TavaroMCP/Bridge/BridgeMessages.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string_view>

namespace tavaro {

/// Who asks for a tool, while the answer is worked out.
class BridgeClient {
public:
    virtual ~BridgeClient() = default;

    /// Any thread. Never waits: a client that does not read misses some.
    virtual void progress(double fraction, std::string_view message) = 0;
    /// Any thread. Once it is false, nobody waits for the answer any more: the client is gone, or the server ends,
    /// which still sends what it gets at once.
    virtual bool isConnected() const = 0;
};

/// The application behind the bridge.
class BridgeApplication {
public:
    virtual ~BridgeApplication() = default;

    /// The tool's result. On the thread of the client's connection, which it may hold for as long as it takes; several
    /// are answered at the same time. `client` lives until it returns. What it throws becomes a failure by its
    /// sentence.
    virtual ToolResult answer(BridgeRequest request, BridgeClient& client) = 0;
};

struct BridgeLimits {
    std::size_t lineBytes = longestBridgeLine;
    std::chrono::milliseconds lineTime{10'000}; // for a request to come in, and for a client to take more of a result
    std::chrono::milliseconds lastWords{1'000}; // for answers under way when the server ends
    std::size_t connections = 128;              // more wait until one ends
    std::chrono::milliseconds silence{2'000};   // of a client that holds its place while others wait
};

/// The application's side of the bridge: a thread that lets clients in ("com.tavaro.mcp.listen"), and one for each
/// connection ("com.tavaro.mcp.client"), made when it comes and ended with it. What a client does wrong (a line that is
/// no request, too long, or not complete in time) costs its connection and nothing else.
class BridgeServer {
public:
    /// Listens, and answers from then on. Throws `SocketError`.
    BridgeServer(std::filesystem::path const& socket, BridgeApplication& application, BridgeLimits limits = {});
    /// Lets nobody in, waits for the answers under way and sends them; a client that takes too long over its last one
    /// does without.
    ~BridgeServer();
    BridgeServer(BridgeServer const&) = delete;
    BridgeServer& operator=(BridgeServer const&) = delete;

    /// Any thread.
    std::size_t connections() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
