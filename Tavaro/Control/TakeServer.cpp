#include <Tavaro/Control/TakeServer.h>

#include <Tavaro/Control/Private/ControlVerbs.h>
#include <Tavaro/Control/Private/MainQueueDesk.h>
#include <Tavaro/Control/TakeCaller.h>
#include <Tavaro/Model/Recording/RecordingController.h>

#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Sockets/SocketError.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <fmt/format.h>

#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

bool isDead(fs::path const& socket) {
    try {
        return fs::is_socket(socket) && !UnixSocket::connect(socket);
    } catch (SocketError const&) {
        return false;
    }
}

/// What programs that were killed have left.
void removeDead(fs::path const& folder) {
    FolderLock const lock(folder); // since a socket that is being made is dead for a moment
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(folder, ignored))
        if (isDead(entry.path())) fs::remove(entry.path(), ignored);
}

void follow(RecordingController& recorder, std::string const& order) {
    bool const isPaused = recorder.state().phase == RecorderPhase::paused;
    if (order == control::pauseTake && recorder.isTaking()) return isPaused ? recorder.resume() : recorder.pause();
    if (order != control::stopTake) return;
    if (recorder.isTaking()) return recorder.stop();
    if (recorder.state().phase == RecorderPhase::countdown) recorder.cancel();
}

}

fs::path takeSocketFolder() { return folders::applicationSupport() / "Tavaro/takes"; }

class TakeServer::Desk {
public:
    Desk(MainQueue& queue, RecordingController& recorder, fs::path const& folder)
        : desk_(queue, folder / fmt::format("{}.sock", ::getpid()),
                [&recorder](BridgeRequest const& order, MainQueueDesk::Reply const& reply) {
                    follow(recorder, order.tool);
                    auto const& state = recorder.state();
                    reply->finish(toolResult::ok(
                        "A take.",
                        JSONValue::Object{{"phase", std::string(nameOf(state.phase))},
                                          {"milliseconds", static_cast<std::int64_t>(state.take.seconds * 1000)}}));
                }) {}

private:
    MainQueueDesk desk_;
};

TakeServer::TakeServer(MainQueue& queue, RecordingController& recorder, fs::path const& folder) {
    removeDead(folder);
    desk_ = std::make_unique<Desk>(queue, recorder, folder);
}

TakeServer::~TakeServer() = default;

}
