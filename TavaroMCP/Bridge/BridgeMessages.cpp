#include <TavaroMCP/Bridge/BridgeMessages.h>

#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

template<RecordType Message> Message decoded(std::string_view line, char const* what) {
    try {
        return decodeJSON<Message>(line);
    } catch (JSONError const& error) {
        throw JSONError(error.kind(), fmt::format("{} that cannot be read: {}.", what, error.what()));
    }
}

void expectMember(bool isGiven, char const* sentence) {
    if (!isGiven) throw JSONError(JSONError::Kind::malformed, sentence);
}

}

std::string bridgeLine(BridgeRequest const& request) { return encodeJSON(request) + "\n"; }

std::string bridgeLine(BridgeReply const& reply) { return encodeJSON(reply) + "\n"; }

BridgeRequest requestOf(std::string_view line) {
    auto request = decoded<BridgeRequest>(line, "Bridge request");
    expectMember(request.id.has_value(), "Bridge request without id.");
    expectMember(!request.client.empty(), "Bridge request without client.");
    expectMember(!request.tool.empty(), "Bridge request without tool.");
    expectMember(request.arguments.text().starts_with('{'), "Bridge request without arguments.");
    return request;
}

BridgeReply replyOf(std::string_view line) {
    auto reply = decoded<BridgeReply>(line, "Bridge reply");
    expectMember(reply.id.has_value(), "Bridge reply without id.");
    expectMember(reply.result || reply.progress, "Bridge reply without result.");
    return reply;
}

}
