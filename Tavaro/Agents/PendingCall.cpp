#include <Tavaro/Agents/Private/PendingCall.h>

#include <TavaroMCP/Bridge/BridgeServer.h>

#include <chrono>
#include <utility>

namespace tavaro {

std::optional<ToolResult> PendingCall::wait(std::function<bool()> const& isOver) {
    constexpr std::chrono::milliseconds betweenLooks(50);
    std::unique_lock lock(mutex_);
    while (!finished_.wait_for(lock, betweenLooks, [this] { return result_.has_value(); }))
        if (!client_->isConnected() || isOver()) break;
    client_ = nullptr;
    return std::exchange(result_, std::nullopt);
}

void PendingCall::progress(double fraction, std::string const& message) {
    std::lock_guard const lock(mutex_);
    if (client_) client_->progress(fraction, message);
}

void PendingCall::finish(ToolResult result) {
    {
        std::lock_guard const lock(mutex_);
        result_ = std::move(result);
    }
    finished_.notify_one();
}

void PendingCall::abandon() {
    isAbandoned_ = true;
    if (auto const act = std::exchange(abandon_, nullptr)) act();
}

}
