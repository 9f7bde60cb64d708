#include <TavaroMCP/Protocol/Private/JSONRPC.h>

#include <TavaroCore/Records/JSON.h>

#include <utility>

namespace tavaro::jsonRPC {

namespace {

std::string line(JSONValue::Object message) {
    message.emplace("jsonrpc", "2.0");
    return encodeJSON(JSONValue(std::move(message)));
}

}

std::string result(JSONValue result, JSONValue const& id) { return line({{"id", id}, {"result", std::move(result)}}); }

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
