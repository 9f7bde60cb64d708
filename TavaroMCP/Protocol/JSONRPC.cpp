#include <TavaroMCP/Protocol/Private/JSONRPC.h>

#include <TavaroCore/Records/JSON.h>

#include <utility>

namespace tavaro::jsonRPC {

namespace {

struct ResultMessage {
    JSONValue id;
    std::string jsonrpc = "2.0";
    JSONText result;

    static constexpr auto fields =
        std::tuple{field("id", &ResultMessage::id), field("jsonrpc", &ResultMessage::jsonrpc),
                   field("result", &ResultMessage::result)};
};
static_assert(listsEveryField<ResultMessage>);

std::string line(JSONValue::Object message) {
    message.emplace("jsonrpc", "2.0");
    return encodeJSON(JSONValue(std::move(message)));
}

}

std::string result(JSONText result, JSONValue const& id) {
    return encodeJSON(ResultMessage{.id = id, .result = std::move(result)});
}

std::string error(ErrorCode code, std::string_view message, JSONValue const& id) {
    return line({{"id", id}, {"error", JSONValue::Object{{"code", static_cast<int>(code)}, {"message", message}}}});
}

std::string progress(Progress const& progress) {
    return line({{"method", "notifications/progress"},
                 {"params", JSONValue::Object{{"progressToken", progress.token},
                                              {"progress", progress.fraction},
                                              {"total", 1},
                                              {"message", progress.message}}}});
}

}
