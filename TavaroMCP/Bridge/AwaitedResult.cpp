#include <TavaroMCP/Bridge/AwaitedResult.h>

#include <TavaroMCP/Bridge/BridgeServer.h>

#include <chrono>
#include <utility>

namespace tavaro {

std::optional<ToolResult> AwaitedResult::wait(std::function<bool()> const& isOver) {
    constexpr std::chrono::milliseconds betweenLooks(50);
    std::unique_lock lock(mutex_);
    while (!finished_.wait_for(lock, betweenLooks, [this] { return result_.has_value(); }))
        if (!client_->isConnected() || isOver()) break;
    client_ = nullptr;
    return std::exchange(result_, std::nullopt);
}

void AwaitedResult::progress(double fraction, std::string const& message) {
    std::lock_guard const lock(mutex_);
    if (client_) client_->progress(fraction, message);
}

void AwaitedResult::finish(ToolResult result) {
    {
        std::lock_guard const lock(mutex_);
        if (!result_) result_ = std::move(result);
    }
    finished_.notify_one();
}

void AwaitedResult::abandon() {
    isAbandoned_ = true;
    if (auto const act = std::exchange(abandon_, nullptr)) act();
}

}
