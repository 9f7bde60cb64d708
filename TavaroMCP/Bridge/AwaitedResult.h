#pragma once

#include <TavaroMCP/Protocol/ToolResult.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace tavaro {

class BridgeClient;

/// What a connection's thread waits for while the main queue works on it. Whoever is done first, the work or the
/// waiting, the other one goes on without it.
class AwaitedResult {
public:
    /// `client` is used only while somebody waits.
    explicit AwaitedResult(BridgeClient& client) : client_(&client) {}

    /// The connection's thread. None when the client has gone, or once `isOver`, which is asked now and then.
    std::optional<ToolResult> wait(std::function<bool()> const& isOver);

    // Any thread:
    void progress(double fraction, std::string const& message);
    /// The first one counts.
    void finish(ToolResult result);

    // The main queue:
    void onAbandoned(std::function<void()> abandon) { abandon_ = std::move(abandon); }
    bool isAbandoned() const { return isAbandoned_; }
    void abandon();

private:
    std::mutex mutex_;
    std::condition_variable finished_;
    BridgeClient* client_; // null when nobody waits any more; this and the result are guarded by `mutex_`
    std::optional<ToolResult> result_;
    std::function<void()> abandon_; // the main queue's, as is the next
    bool isAbandoned_ = false;
};

}
