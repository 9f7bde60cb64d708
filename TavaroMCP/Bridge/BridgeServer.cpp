#include <TavaroMCP/Bridge/BridgeServer.h>

#include <TavaroCore/Records/JSONError.h>
#include <TavaroMCP/Protocol/ToolResult.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Sockets/Bell.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>
#include <TavaroPlatform/Sockets/UnixSocketListener.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <list>
#include <mutex>
#include <optional>
#include <poll.h>
#include <spdlog/spdlog.h>
#include <string>
#include <system_error>
#include <utility>

namespace tavaro {

namespace {

/// The client of one request.
class ConnectedClient final : public BridgeClient {
public:
    ConnectedClient(UnixSocket const& socket, std::int64_t request, std::atomic<bool> const& isEnding)
        : socket_(socket)
        , request_(request)
        , isEnding_(isEnding) {}

    void progress(double fraction, std::string_view message) override {
        std::unique_lock const lock(mutex_, std::try_to_lock);
        if (!lock) return; // another thread reports
        sendUnsent();
        if (!unsent_.empty()) return;
        double const share = fraction > 0 ? std::min(fraction, 1.0) : 0; // also of what is no number
        unsent_ = bridgeLine(BridgeReply{.id = request_, .progress = share, .message = std::string(message)});
        sendUnsent();
    }

    bool isConnected() const override { return !isEnding_ && socket_.isConnected(); }

    /// False where the client does not take it in time.
    bool finish(JSONText result, UnixSocket::Patience patience) {
        std::lock_guard const lock(mutex_);
        unsent_ += bridgeLine(BridgeReply{.id = request_, .result = std::move(result)});
        return socket_.sendAll(unsent_, patience);
    }

private:
    void sendUnsent() { unsent_.erase(0, socket_.sendNow(unsent_).value_or(unsent_.size())); }

    UnixSocket const& socket_;
    std::int64_t const request_;
    std::atomic<bool> const& isEnding_; // the server is
    std::mutex mutex_;
    std::string unsent_; // of a line that has gone in part
};

using Clock = std::chrono::steady_clock;

struct Connection {
    static constexpr Clock::time_point never = Clock::time_point::max();

    explicit Connection(UnixSocket accepted) : socket(std::move(accepted)) {}

    UnixSocket socket;
    std::atomic<Clock::time_point> silentSince = Clock::now(); // while it has not begun to ask
    std::atomic<bool> isOver = false;
    SerialQueue queue{"com.tavaro.mcp.client"}; // ends before what it uses
};

std::optional<BridgeRequest> readRequest(LineReader& lines, UnixSocket::Patience patience) {
    auto const line = lines.next(patience);
    if (!line) return std::nullopt;
    try {
        return requestOf(*line);
    } catch (JSONError const& error) {
        spdlog::warn("A client on the bridge sent what is no request: {}", error.what());
        return std::nullopt;
    }
}

ToolResult answerOf(BridgeApplication& application, BridgeRequest request, BridgeClient& client) {
    try {
        return application.answer(std::move(request), client);
    } catch (MCPToolError const& error) {
        return toolResult::failure(error.code, error.what());
    } catch (std::exception const& error) {
        return toolResult::failure(MCPErrorCode::failed, error.what());
    }
}

}

struct BridgeServer::State {
    UnixSocketListener listener;
    BridgeApplication& application;
    BridgeLimits const limits;
    Bell bell;
    std::atomic<bool> isEnding = false;
    std::atomic<std::size_t> count = 0;
    std::list<Connection> connections; // the listening thread's
    std::optional<SerialQueue> listening;

    State(std::filesystem::path const& socket, BridgeApplication& application, BridgeLimits limits)
        : listener(socket)
        , application(application)
        , limits(limits) {}

    void listen();
    void rest() const;
    void removeEnded();
    void sendSilentAway();
    std::optional<BridgeRequest> nextRequest(Connection& connection, LineReader& lines) const;
    void admit(UnixSocket socket);
    void serve(Connection& connection);
    void sendLastAnswers();
};

void BridgeServer::State::listen() {
    constexpr int betweenLooks = 100; // milliseconds, in a full house
    while (!isEnding) {
        bool const isFull = connections.size() >= limits.connections;
        pollfd waiting[] = {{bell.descriptor(), POLLIN, 0}, {isFull ? -1 : listener.descriptor(), POLLIN, 0}};
        ::poll(waiting, std::size(waiting), isFull ? betweenLooks : -1);
        bell.hush();
        if (isFull) sendSilentAway();
        removeEnded();
        if (waiting[1].revents == 0) continue;
        if (auto socket = listener.accept())
            admit(*std::move(socket));
        else
            rest();
    }
}

/// A process that has no room for one more connection would try again and again.
void BridgeServer::State::rest() const {
    constexpr int milliseconds = 50;
    pollfd waiting{bell.descriptor(), POLLIN, 0};
    ::poll(&waiting, 1, milliseconds);
}

void BridgeServer::State::sendSilentAway() {
    auto const since = Clock::now() - limits.silence;
    for (auto const& connection : connections)
        if (connection.silentSince.load() < since) connection.socket.shutDown();
}

void BridgeServer::State::removeEnded() {
    connections.remove_if([](Connection const& connection) { return connection.isOver.load(); });
    count = connections.size();
}

void BridgeServer::State::admit(UnixSocket socket) {
    try {
        auto& connection = connections.emplace_back(std::move(socket));
        count = connections.size();
        connection.queue.async([this, &connection] { serve(connection); });
    } catch (std::system_error const& error) { // no thread is to be had
        spdlog::warn("A client on the bridge was sent away: {}", error.what());
    }
}

std::optional<BridgeRequest> BridgeServer::State::nextRequest(Connection& connection, LineReader& lines) const {
    connection.silentSince = Clock::now();
    bool const speaks = lines.awaitBeginning(limits.lineTime);
    connection.silentSince = Connection::never;
    return speaks ? readRequest(lines, limits.lineTime) : std::nullopt;
}

void BridgeServer::State::serve(Connection& connection) {
    LineReader lines(connection.socket, limits.lineBytes);
    while (auto request = nextRequest(connection, lines)) {
        ConnectedClient client(connection.socket, *request->id, isEnding);
        if (!client.finish(answerOf(application, *std::move(request), client), limits.lineTime)) break;
    }
    connection.socket.shutDown();
    connection.isOver = true;
    bell.ring();
}

/// Whoever has nothing under way is over at once.
void BridgeServer::State::sendLastAnswers() {
    using namespace std::chrono;
    auto const deadline = steady_clock::now() + limits.lastWords;
    for (auto const& connection : connections) connection.socket.endInput();
    while (!std::ranges::all_of(connections, [](auto const& each) { return each.isOver.load(); })) {
        auto const left = ceil<milliseconds>(deadline - steady_clock::now());
        if (left <= milliseconds::zero()) return;
        pollfd waiting{bell.descriptor(), POLLIN, 0};
        ::poll(&waiting, 1, static_cast<int>(left.count()));
        bell.hush();
    }
}

BridgeServer::BridgeServer(std::filesystem::path const& socket, BridgeApplication& application, BridgeLimits limits)
    : state_(std::make_unique<State>(socket, application, limits)) {
    state_->listening.emplace("com.tavaro.mcp.listen");
    state_->listening->async([state = state_.get()] { state->listen(); });
}

BridgeServer::~BridgeServer() {
    state_->isEnding = true;
    state_->bell.ring();
    state_->listening.reset();
    state_->sendLastAnswers();
    for (auto& connection : state_->connections) connection.socket.shutDown();
    state_->connections.clear();
}

std::size_t BridgeServer::connections() const { return state_->count; }

}
