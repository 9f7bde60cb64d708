#include <Tavaro/Control/Private/MainQueueDesk.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroPlatform/Queues/MainQueue.h>

namespace tavaro {

ToolResult control::failed(std::string_view sentence) { return toolResult::failure(MCPErrorCode::failed, sentence); }

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
    auto const reply = std::make_shared<AwaitedResult>(client);
    queue_.async([this, here = std::weak_ptr(isHere_), request = std::move(request), reply] {
        if (!here.lock()) return;
        try {
            follow_(request, reply);
        } catch (Error const& error) {
            reply->finish(control::failed(error.what()));
        }
    });
    return reply->wait([this] { return isOver_.load(); }).value_or(control::failed("Tavaro has ended."));
}

}
