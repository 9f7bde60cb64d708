#pragma once

#include <TavaroMCP/Bridge/BridgeServer.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tavaro {

class MainQueue;

/// An answer that a connection's thread waits for while the main queue works on it. The first one counts.
class ControlReply {
public:
    void give(ToolResult const& result) {
        if (!std::exchange(isGiven_, true)) promise_.set_value(result);
    }
    /// As a failure.
    void fail(std::string_view sentence);
    bool isGiven() const { return isGiven_; }
    std::future<ToolResult> future() { return promise_.get_future(); }

private:
    std::promise<ToolResult> promise_;
    bool isGiven_ = false; // the main queue's
};

/// Where orders of the user's own programs come in over a socket, to be followed on the main queue, to which it
/// belongs.
class MainQueueDesk final : public BridgeApplication {
public:
    using Reply = std::shared_ptr<ControlReply>;
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
