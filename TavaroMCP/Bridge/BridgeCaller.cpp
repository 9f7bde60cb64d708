#include <TavaroMCP/Bridge/BridgeCaller.h>

#include <TavaroCore/Records/JSONError.h>
#include <TavaroMCP/Bridge/BridgeMessages.h>
#include <TavaroMCP/Protocol/ToolResult.h>
#include <TavaroPlatform/Processes/DesktopSession.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroPlatform/Sockets/SocketError.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <fmt/format.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace tavaro {

namespace {

/// Clients start the server with few variables, and the application needs those of the desktop.
std::optional<DetachedProcess> startApplication(std::vector<std::string> const& command) {
    return DetachedProcess::start(command, hasDisplay() ? std::vector<std::string>() : desktopSessionVariables());
}

/// Tries until the application listens. None where it does not in time. One that fails may have found another that is
/// about to listen.
std::optional<UnixSocket> connectToStarted(BridgeCaller::Settings const& settings, std::stop_token const& cancelled) {
    auto application = startApplication(settings.command);
    if (!application) return std::nullopt;
    auto deadline = std::chrono::steady_clock::now() + settings.timeToStart;
    bool hasFailed = false;
    while (std::chrono::steady_clock::now() < deadline && !cancelled.stop_requested()) {
        std::this_thread::sleep_for(settings.betweenTries);
        if (auto socket = UnixSocket::connect(settings.socket)) return socket;
        if (hasFailed || !application->hasFailed()) continue;
        hasFailed = true;
        deadline = std::min(deadline, std::chrono::steady_clock::now() + settings.timeAfterFailure);
    }
    return std::nullopt;
}

UnixSocket connectTo(BridgeCaller::Settings const& settings, std::stop_token const& cancelled) {
    auto socket = UnixSocket::connect(settings.socket);
    if (!socket) socket = connectToStarted(settings, cancelled);
    if (socket) return *std::move(socket);
    throw MCPToolError(MCPErrorCode::appUnreachable,
                       "Couldn't reach Tavaro. Make sure it is installed in /Applications and opens normally.");
}

BridgeReply nextReply(LineReader& lines) {
    auto const line = lines.next(UnixSocket::forever);
    if (!line) throw MCPToolError::interrupted();
    return replyOf(*line);
}

JSONText resultOver(UnixSocket const& socket, BridgeRequest const& request, BridgeCaller::Progress const& progress,
                    std::stop_token const& cancelled) {
    std::stop_callback const leave(cancelled, [&] { socket.shutDown(); });
    if (!socket.sendAll(bridgeLine(request), UnixSocket::forever)) throw MCPToolError::interrupted();
    LineReader lines(socket, longestBridgeLine);
    while (true) {
        auto reply = nextReply(lines);
        if (reply.id != request.id) continue;
        if (reply.result) return *std::move(reply.result);
        progress(*reply.progress, reply.message.value_or(""));
    }
}

}

std::vector<std::string> applicationCommand() {
    auto const studio = findProgram("tavaro-studio");
    if (studio && (hasDisplay() || !desktopSessionVariables().empty())) return {studio->string(), "--minimized"};
    if (auto const application = findProgram("tavaro")) return {application->string(), "serve", "--until-idle"};
    return {};
}

JSONText BridgeCaller::call(Call call, Progress const& progress) const {
    BridgeRequest const request{1, std::move(call.client), std::move(call.tool), std::move(call.arguments)};
    try {
        return resultOver(connectTo(settings_, call.cancelled), request, progress, call.cancelled);
    } catch (MCPToolError const& error) {
        return toolResult::failure(error.code, error.what());
    } catch (SocketError const& error) {
        return toolResult::failure(MCPErrorCode::appUnreachable, error.what());
    } catch (std::exception const& error) {
        return toolResult::failure(MCPErrorCode::failed, error.what());
    }
}

}
