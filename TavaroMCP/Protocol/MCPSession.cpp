#include <TavaroMCP/Protocol/MCPSession.h>

#include <TavaroCore/Records/JSONError.h>
#include <TavaroMCP/Catalogue/MCPToolCatalog.h>
#include <TavaroMCP/Protocol/Private/JSONRPC.h>
#include <TavaroMCP/Protocol/Private/Turnstile.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <map>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

constexpr std::string_view protocolVersion = "2025-06-18";
constexpr std::string_view instructions =
    "Tavaro records real software on this Mac and turns it into a polished demo. Typical flow: list_sources → "
    "record_for → get_project → edit_project / run_action → render_frame to check → export.";

constexpr double longestSilence = 0.7; // seconds; with the time between two beats it stays under one
constexpr double quietStep = 1e-6;     // the protocol wants each progress of a call above the one before

std::string_view textAt(JSONValue const& message, std::string_view key) {
    auto const* const text = message.find<std::string>(key);
    return text ? std::string_view(*text) : "";
}

JSONValue::Object initialized(std::string const& version) {
    return {{"protocolVersion", protocolVersion},
            {"capabilities", JSONValue::Object{{"tools", JSONValue::Object{{"listChanged", false}}}}},
            {"serverInfo", JSONValue::Object{{"name", "tavaro"}, {"version", version}}},
            {"instructions", instructions}};
}

struct PendingCall {
    JSONValue id;
    std::optional<jsonRPC::Progress> progress; // the last that was sent, where the client wants any
    double heardAt = 0;                        // when it was
};

double fractionOf(double given) { return given > 0 ? std::min(given, 1.0) : 0; } // also of what is no number

std::optional<JSONValue> parsedObject(std::string_view line) {
    try {
        auto message = JSONValue::parse(line);
        if (message.as<JSONValue::Object>()) return message;
    } catch (JSONError const&) { // the client is told so by one code for all
    }
    return std::nullopt;
}

}

struct MCPSession::State : std::enable_shared_from_this<State> {
    Surroundings around;
    std::string clientName = "MCP client";
    Turnstile turnstile;
    std::map<std::uint64_t, PendingCall> calls; // in the order in which they came
    std::uint64_t callCount = 0;

    explicit State(Surroundings surroundings) : around(std::move(surroundings)) {}

    void dispatch(std::string_view method, JSONValue const& message, JSONValue const& id);
    void meet(JSONValue const& params);
    void startCall(JSONValue const& params, JSONValue const& id);
    void run(std::uint64_t number, ToolCall call);
    void report(std::uint64_t number, double fraction, std::string const& message);
    void finish(std::uint64_t number, JSONText result);
    void reply(JSONText result, JSONValue const& id) { around.write(jsonRPC::result(std::move(result), id)); }
};

void MCPSession::State::dispatch(std::string_view method, JSONValue const& message, JSONValue const& id) {
    static JSONValue const nothing;
    auto const* const given = message.find("params");
    auto const& params = given ? *given : nothing;
    if (method == "initialize") {
        meet(params);
        reply(initialized(around.version), id);
    } else if (method == "ping") {
        reply(JSONValue::Object{}, id);
    } else if (method == "tools/list") {
        reply(toolCatalog::listJSON(), id);
    } else if (method == "tools/call") {
        startCall(params, id);
    } else {
        auto const sentence = "Method not found: " + std::string(method);
        around.write(jsonRPC::error(jsonRPC::ErrorCode::methodNotFound, sentence, id));
    }
}

void MCPSession::State::meet(JSONValue const& params) {
    auto const* const client = params.find("clientInfo");
    auto const name = client ? textAt(*client, "name") : "";
    if (!name.empty()) clientName = name;
}

void MCPSession::State::startCall(JSONValue const& params, JSONValue const& id) {
    auto const name = textAt(params, "name");
    if (name.empty()) {
        return around.write(jsonRPC::error(jsonRPC::ErrorCode::invalidParams, "tools/call needs params.name", id));
    }
    if (!toolCatalog::named(name)) return reply(toolResult::unknownTool(name), id);
    ToolCall call{std::string(name), {}, clientName};
    if (auto const* const arguments = params.find<JSONValue::Object>("arguments")) call.arguments = *arguments;
    PendingCall pending{.id = id, .heardAt = around.now()};
    auto const* const meta = params.find("_meta");
    if (auto const* const token = meta ? meta->find("progressToken") : nullptr)
        pending.progress = {.token = *token, .message = "Waiting for the call before it."};
    auto const number = ++callCount;
    calls.emplace(number, std::move(pending));
    turnstile.enter([this, number, call = std::move(call)]() mutable { run(number, std::move(call)); });
}

void MCPSession::State::run(std::uint64_t number, ToolCall call) {
    if (auto& progress = calls.at(number).progress) progress->message = call.tool + " is at work.";
    // What was started may outlive the session.
    auto const alive = weak_from_this();
    auto const progress = [alive, number](double fraction, std::string const& message) {
        if (auto const state = alive.lock()) state->report(number, fraction, message);
    };
    auto const finished = [alive, number](JSONText result) {
        if (auto const state = alive.lock()) state->finish(number, std::move(result));
    };
    try {
        around.callTool(std::move(call), progress, finished);
    } catch (std::exception const& error) {
        finish(number, toolResult::failure(MCPErrorCode::failed, error.what()));
    }
}

void MCPSession::State::report(std::uint64_t number, double fraction, std::string const& message) {
    auto const found = calls.find(number);
    if (found == calls.end() || !found->second.progress) return;
    auto& call = found->second;
    call.progress->fraction = fractionOf(fraction);
    call.progress->message = message;
    call.heardAt = around.now();
    around.write(jsonRPC::progress(*call.progress));
}

void MCPSession::State::finish(std::uint64_t number, JSONText result) {
    auto const found = calls.find(number);
    if (found == calls.end()) return;
    auto const id = std::move(found->second.id);
    calls.erase(found);
    auto line = jsonRPC::result(std::move(result), id);
    if (line.size() >= longestResult) {
        line = jsonRPC::result(toolResult::failure(MCPErrorCode::failed,
                                                   "The result is longer than the 9 MiB that a client can read. Ask "
                                                   "for less of it."),
                               id);
    }
    around.write(line);
    turnstile.leave();
}

MCPSession::MCPSession(Surroundings surroundings) : state_(std::make_shared<State>(std::move(surroundings))) {}

MCPSession::~MCPSession() = default;

void MCPSession::receive(std::string_view line) {
    auto const message = parsedObject(line);
    if (!message) return state_->around.write(jsonRPC::error(jsonRPC::ErrorCode::parseError, "Parse error", {}));
    auto const method = textAt(*message, "method");
    auto const* const id = message->find("id");
    bool const isNotification = method.starts_with("notifications/") || !id;
    if (!isNotification) state_->dispatch(method, *message, *id);
}

bool MCPSession::isBusy() const { return !state_->calls.empty(); }

void MCPSession::beat() {
    auto const now = state_->around.now();
    for (auto& [number, call] : state_->calls) {
        if (!call.progress || now - call.heardAt < longestSilence) continue;
        call.progress->fraction = std::min(call.progress->fraction + quietStep, 1.0);
        call.heardAt = now;
        state_->around.write(jsonRPC::progress(*call.progress));
    }
}

}
