#include <Tavaro/Control/ControlCaller.h>

#include <Tavaro/Control/Private/ControlVerbs.h>
#include <Tavaro/Control/Private/QuickCall.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroMCP/Bridge/BridgeCaller.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

namespace tavaro {

ControlAnswer toggleRecording(std::string const& client, std::filesystem::path const& socket) {
    if (!UnixSocket::connect(socket))
        throw Error("Tavaro does not run, so there is no take to begin or to end. Open it, or start `tavaro serve`.");
    BridgeCaller const caller({.socket = socket, .command = {}});
    auto const result =
        caller.call({.tool = std::string(control::toggleRecording), .client = client}, [](auto&&...) {}).value();
    auto const* const content = result.find<JSONValue::Array>("content");
    auto const* const text = content && !content->empty() ? content->back().find<std::string>("text") : nullptr;
    auto const* const isError = result.find<bool>("isError");
    if (!text || (isError && *isError)) throw Error(text ? *text : "Tavaro gave no answer.");
    auto const* const details = result.find<JSONValue::Object>("structuredContent");
    return {*text, details ? *details : JSONValue::Object()};
}

bool askToHandOver(std::filesystem::path const& socket) { return quickCall(socket, control::handOver).has_value(); }

}
