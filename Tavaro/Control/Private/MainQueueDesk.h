#pragma once

#include <TavaroMCP/Bridge/AwaitedResult.h>
#include <TavaroMCP/Bridge/BridgeServer.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

class MainQueue;

namespace control {

ToolResult failed(std::string_view sentence);

}

/// Where orders of the user's own programs come in over a socket, to be followed on the main queue, to which it
/// belongs.
class MainQueueDesk final : public BridgeApplication {
public:
    using Reply = std::shared_ptr<AwaitedResult>;
    /// What it throws becomes a failure.
    using Follow = std::function<void(BridgeRequest const& order, Reply const& reply)>;

    /// Answers from then on. Throws `SocketError`.
    MainQueueDesk(MainQueue& queue, std::filesystem::path const& socket, Follow follow);
    ~MainQueueDesk() override;
    MainQueueDesk(MainQueueDesk const&) = delete;
    MainQueueDesk& operator=(MainQueueDesk const&) = delete;

    ToolResult answer(BridgeRequest request, BridgeClient& client) override;

private:
    MainQueue& queue_;
    Follow const follow_;
    std::shared_ptr<bool> const isHere_ = std::make_shared<bool>(true); // the main queue's
    std::atomic<bool> isOver_ = false;
    std::optional<BridgeServer> server_;
};

}
