#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/JSONText.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace tavaro {

/// What the server asks the application for. All of it has to be there, but no arguments are an empty object.
struct BridgeRequest {
    std::optional<std::int64_t> id; // of its connection's requests, only this one's
    std::string client;             // the name by which the user allows or refuses it
    std::string tool;
    JSONText arguments = JSONValue::Object{}; // an object; a tree of it is made for a client that may, and not before

    static constexpr auto fields = std::tuple{
        field("id", &BridgeRequest::id),
        field("client", &BridgeRequest::client),
        field("tool", &BridgeRequest::tool),
        field("arguments", &BridgeRequest::arguments),
    };
    bool operator==(BridgeRequest const&) const = default;
};
static_assert(listsEveryField<BridgeRequest>);

/// What the application answers: any number of times how far it is (0…1), then the result.
struct BridgeReply {
    std::optional<std::int64_t> id; // the request's; a reply without one is refused
    std::optional<double> progress;
    std::optional<std::string> message;
    std::optional<JSONText> result;

    static constexpr auto fields = std::tuple{
        field("id", &BridgeReply::id),
        field("progress", &BridgeReply::progress),
        field("message", &BridgeReply::message),
        field("result", &BridgeReply::result),
    };
    bool operator==(BridgeReply const&) const = default;
};
static_assert(listsEveryField<BridgeReply>);

/// Both go over the connection as one line of JSON each; no longer one is read.
constexpr std::size_t longestBridgeLine = std::size_t{64} << 20;

/// The line with its newline.
std::string bridgeLine(BridgeRequest const& request);
std::string bridgeLine(BridgeReply const& reply);
/// Throw `JSONError`.
BridgeRequest requestOf(std::string_view line);
BridgeReply replyOf(std::string_view line);

}
