#include <Tavaro/Control/Private/QuickCall.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroMCP/Bridge/BridgeMessages.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <chrono>

namespace tavaro {

namespace {

constexpr std::chrono::seconds patience{1};
constexpr std::size_t longest = std::size_t{1} << 20; // bytes

std::optional<JSONValue::Object> details(JSONValue const& result) {
    auto const* const isError = result.find<bool>("isError");
    if (isError && *isError) return std::nullopt;
    auto const* const content = result.find<JSONValue::Object>("structuredContent");
    return content ? *content : JSONValue::Object();
}

}

std::optional<JSONValue::Object> quickCall(std::filesystem::path const& socket, std::string_view order) {
    try {
        auto const connection = UnixSocket::connect(socket);
        BridgeRequest const request{.id = 1, .client = "tavaro", .tool = std::string(order)};
        if (!connection || !connection->sendAll(bridgeLine(request), patience)) return std::nullopt;
        LineReader lines(*connection, longest);
        auto const line = lines.next(patience);
        auto const reply = line ? replyOf(*line) : BridgeReply{};
        return reply.result ? details(reply.result->value()) : std::nullopt;
    } catch (Error const&) {
        return std::nullopt;
    }
}

}
