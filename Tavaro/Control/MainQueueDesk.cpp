#include <Tavaro/Control/Private/MainQueueDesk.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <chrono>

namespace tavaro {

namespace {

ToolResult failed(std::string_view sentence) { return toolResult::failure(MCPErrorCode::failed, sentence); }

}

void ControlReply::fail(std::string_view sentence) { give(failed(sentence)); }

MainQueueDesk::MainQueueDesk(MainQueue& queue, std::filesystem::path const& socket, Follow follow)
    : queue_(queue)
    , follow_(std::move(follow)) {
    server_.emplace(socket, *this);
}

MainQueueDesk::~MainQueueDesk() {
    isOver_ = true;
    server_.reset();
}

ToolResult MainQueueDesk::answer(BridgeRequest request, BridgeClient& client) {
    using namespace std::chrono_literals;
    auto const reply = std::make_shared<ControlReply>();
    auto answer = reply->future();
    queue_.async([this, here = std::weak_ptr(isHere_), request = std::move(request), reply] {
        if (!here.lock()) return;
        try {
            follow_(request, reply);
        } catch (Error const& error) {
            reply->fail(error.what());
        }
    });
    while (answer.wait_for(50ms) != std::future_status::ready)
        if (isOver_ || !client.isConnected()) return failed("Tavaro has ended.");
    return answer.get();
}

}
