#include <TavaroMCP/Protocol/MCPSession.h>

#include <TavaroCore/Records/JSONError.h>
#include <TavaroMCP/Catalogue/MCPToolCatalog.h>
#include <TavaroMCP/Protocol/Private/IncomingMessage.h>
#include <TavaroMCP/Protocol/Private/JSONRPC.h>
#include <TavaroMCP/Protocol/Private/Turnstile.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <map>
#include <optional>
#include <stop_token>
#include <utility>

namespace tavaro {

namespace {

constexpr std::string_view protocolVersion = "2025-06-18";
constexpr std::string_view instructions =
    "Tavaro records real software on this Mac and turns it into a polished demo. Typical flow: list_sources → "
    "record_for → get_project → edit_project / run_action → render_frame to check → export.";

constexpr double longestSilence = 0.7; // seconds; with the time between two beats it stays under one
constexpr double briefest = 0.25;      // seconds between two of a call; what is new in between goes with a beat
constexpr double quietStep = 1e-6;     // the protocol wants each progress of a call above the one before
constexpr double mostUnderWay = 0.999; // the whole is reached with the result

JSONValue::Object initialized(std::string const& version) {
    return {{"protocolVersion", protocolVersion},
            {"capabilities", JSONValue::Object{{"tools", JSONValue::Object{{"listChanged", false}}}}},
            {"serverInfo", JSONValue::Object{{"name", "tavaro"}, {"version", version}}},
            {"instructions", instructions}};
}

struct PendingCall {
    JSONValue id;
    std::optional<jsonRPC::Progress> progress; // the last that was sent, where the client wants any
    double heardAt = 0;                        // when it was, or when the call came
    bool isHeard = false;                      // something was sent
    bool hasNews = false;                      // that were not
    double reported = 0;                       // the newest fraction
    std::stop_source cancelling = {};

    bool isCancelled() const { return cancelling.stop_requested(); }
};

double fractionOf(double given) { return given > 0 ? std::min(given, mostUnderWay) : 0; } // also of what is no number

/// Where nothing moves, or goes back, a little above the last one; always below 1.
double nextFraction(PendingCall const& call) {
    double const last = call.progress->fraction;
    double const step = std::min(quietStep, (1 - last) / 1000);
    return call.isHeard ? std::max(last + step, call.reported) : call.reported;
}

}

struct MCPSession::State : std::enable_shared_from_this<State> {
    Surroundings around;
    std::string clientName = "MCP client";
    Turnstile turnstile;
    std::map<std::uint64_t, PendingCall> calls; // in the order in which they came
    std::uint64_t callCount = 0;

    explicit State(Surroundings surroundings) : around(std::move(surroundings)) {}

    void dispatch(IncomingMessage const& message);
    void meet(IncomingMessage const& message);
    void startCall(IncomingMessage const& message);
    void run(std::uint64_t number, ToolCall call);
    void cancel(IncomingMessage const& message);
    void report(std::uint64_t number, double fraction, std::string const& message);
    void send(PendingCall& call);
    void finish(std::uint64_t number, JSONText result);
    void reply(JSONText result, JSONValue const& id) { around.write(jsonRPC::result(std::move(result), id)); }
};

void MCPSession::State::dispatch(IncomingMessage const& message) {
    auto const& [id, method, params] = message;
    if (method == "initialize") {
        meet(message);
        reply(initialized(around.version), *id);
    } else if (method == "ping") {
        reply(JSONValue::Object{}, *id);
    } else if (method == "tools/list") {
        reply(toolCatalog::listJSON(), *id);
    } else if (method == "tools/call") {
        startCall(message);
    } else {
        around.write(jsonRPC::error(jsonRPC::ErrorCode::methodNotFound, "Method not found: " + method, *id));
    }
}

void MCPSession::State::meet(IncomingMessage const& message) {
    auto name = nameOfClient(message);
    if (!name.empty()) clientName = std::move(name);
}

void MCPSession::State::startCall(IncomingMessage const& message) {
    auto given = CallParameters::of(message);
    if (given.name.empty()) {
        return around.write(
            jsonRPC::error(jsonRPC::ErrorCode::invalidParams, "tools/call needs params.name", *message.id));
    }
    PendingCall pending{.id = *message.id, .heardAt = around.now()};
    if (given.progressToken)
        pending.progress = {.token = *std::move(given.progressToken), .message = "Waiting for the call before it."};
    auto const number = ++callCount;
    auto const cancelled = pending.cancelling.get_token();
    calls.emplace(number, std::move(pending));
    // A task is copied with the function that holds it, and arguments may be large.
    auto const call =
        std::make_shared<ToolCall>(ToolCall{std::move(given.name), std::move(given.arguments), clientName, cancelled});
    turnstile.enter([this, number, call] { run(number, std::move(*call)); });
}

void MCPSession::State::run(std::uint64_t number, ToolCall call) {
    if (calls.at(number).isCancelled()) return finish(number, JSONValue::Object{});
    if (!toolCatalog::named(call.tool)) return finish(number, toolResult::unknownTool(call.tool));
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

/// Nothing is answered then. One that waits for its turn is over when that comes.
void MCPSession::State::cancel(IncomingMessage const& message) {
    auto const id = cancelledRequest(message);
    auto const found = std::ranges::find_if(calls, [&](auto const& each) { return id && each.second.id == *id; });
    if (found == calls.end()) return;
    found->second.progress.reset();
    auto cancelling = found->second.cancelling; // the call may end meanwhile
    cancelling.request_stop();
}

void MCPSession::State::report(std::uint64_t number, double fraction, std::string const& message) {
    auto const found = calls.find(number);
    if (found == calls.end() || !found->second.progress) return;
    auto& call = found->second;
    call.reported = fractionOf(fraction);
    call.progress->message = message;
    call.hasNews = true;
    if (!call.isHeard || around.now() - call.heardAt >= briefest) send(call);
}

void MCPSession::State::send(PendingCall& call) {
    call.progress->fraction = nextFraction(call);
    call.heardAt = around.now();
    call.isHeard = true;
    call.hasNews = false;
    around.write(jsonRPC::progress(*call.progress));
}

void MCPSession::State::finish(std::uint64_t number, JSONText result) {
    auto const found = calls.find(number);
    if (found == calls.end()) return;
    bool const isCancelled = found->second.isCancelled();
    auto const id = std::move(found->second.id);
    calls.erase(found);
    if (isCancelled) return turnstile.leave();
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
    auto const message = IncomingMessage::of(line);
    if (!message) return state_->around.write(jsonRPC::error(jsonRPC::ErrorCode::parseError, "Parse error", {}));
    bool const isNotification = message->method.starts_with("notifications/") || !message->id;
    try {
        if (!isNotification) return state_->dispatch(*message);
        if (!message->id && message->method == "notifications/cancelled") state_->cancel(*message);
    } catch (JSONError const& error) {
        if (isNotification) return;
        auto const sentence = std::string("The parameters cannot be read: ") + error.what();
        state_->around.write(jsonRPC::error(jsonRPC::ErrorCode::invalidParams, sentence, *message->id));
    }
}

void MCPSession::refuseTooLong(std::string_view beginning) {
    auto const id = IncomingMessage::idIn(beginning);
    auto const code = id ? jsonRPC::ErrorCode::invalidRequest : jsonRPC::ErrorCode::parseError;
    state_->around.write(
        jsonRPC::error(code, "The line is longer than the 16 MiB that are read", id.value_or(JSONValue())));
}

bool MCPSession::isBusy() const { return !state_->calls.empty(); }

void MCPSession::beat() {
    auto const now = state_->around.now();
    for (auto& [number, call] : state_->calls) {
        if (call.progress && now - call.heardAt >= (call.hasNews ? briefest : longestSilence)) state_->send(call);
    }
}

}
