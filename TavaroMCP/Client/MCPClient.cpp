#include <TavaroMCP/Client/MCPClient.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>

#include <chrono>
#include <utility>

namespace tavaro {

namespace {

constexpr std::chrono::milliseconds glance(50);

ConnectedProcess started(std::filesystem::path const& server) {
    if (auto process = ConnectedProcess::start({server.string()})) return *std::move(process);
    throw MCPClientError(MCPClientError::Kind::cannotStart, fmt::format("Could not start “{}”.", server.string()));
}

MCPClientError ended() {
    return {MCPClientError::Kind::ended, "The server of the tools ended in the middle of the conversation."};
}

MCPClientError tooLong() {
    return {MCPClientError::Kind::misspoken, "The server of the tools sent a line of more than 16 MiB."};
}

void reportProgress(JSONValue const& message, MCPClient::Watch const& watch) {
    auto const* const parameters = message.find("params");
    if (!parameters || !watch.progress) return;
    auto const* const real = parameters->find<double>("progress");
    auto const* const whole = parameters->find<std::int64_t>("progress");
    auto const* const text = parameters->find<std::string>("message");
    watch.progress(real ? *real : whole ? static_cast<double>(*whole) : 0, text ? *text : "");
}

JSONValue resultOf(JSONValue const& reply) {
    if (auto const* const result = reply.find("result")) return *result;
    auto const* const error = reply.find("error");
    auto const* const sentence = error ? error->find<std::string>("message") : nullptr;
    throw MCPClientError(MCPClientError::Kind::misspoken,
                         fmt::format("The server of the tools refused: {}.", excerpt(sentence ? *sentence : "")));
}

}

MCPClient::MCPClient(Settings const& settings, Watch const& watch)
    : process_(started(settings.server))
    , lines_(process_.socket(), longestLine) {
    ask("initialize",
        {{"protocolVersion", "2025-06-18"},
         {"capabilities", JSONValue::Object{}},
         {"clientInfo", JSONValue::Object{{"name", settings.name}, {"version", settings.version}}}},
        watch);
    send({{"method", "notifications/initialized"}});
}

JSONValue MCPClient::call(std::string_view tool, JSONValue::Object arguments, Watch const& watch) {
    return ask("tools/call",
               {{"name", tool},
                {"arguments", std::move(arguments)},
                {"_meta", JSONValue::Object{{"progressToken", last_ + 1}}}},
               watch);
}

void MCPClient::send(JSONValue::Object message) const {
    message.emplace("jsonrpc", "2.0");
    if (!process_.socket().sendAll(encodeJSON(JSONValue(std::move(message))) + "\n", UnixSocket::forever))
        throw ended();
}

JSONValue MCPClient::ask(std::string_view method, JSONValue::Object parameters, Watch const& watch) {
    send({{"id", ++last_}, {"method", method}, {"params", std::move(parameters)}});
    while (true) {
        auto const message = nextMessage(watch);
        auto const* const id = message.find<std::int64_t>("id");
        if (id && *id == last_) return resultOf(message);
        if (auto const* const called = message.find<std::string>("method");
            called && *called == "notifications/progress")
            reportProgress(message, watch);
    }
}

JSONValue MCPClient::nextMessage(Watch const& watch) {
    try {
        return JSONValue::parse(nextLine(watch));
    } catch (JSONError const& error) {
        throw MCPClientError(MCPClientError::Kind::misspoken,
                             fmt::format("The server of the tools cannot be understood: {}.", error.what()));
    }
}

std::string_view MCPClient::nextLine(Watch const& watch) {
    while (true) {
        // First, since a server that reports its progress often always has a line.
        if (watch.isCancelled && watch.isCancelled())
            throw MCPClientError(MCPClientError::Kind::cancelled, "The call was cancelled.");
        if (auto const line = lines_.next(glance)) return *line;
        if (lines_.hasEnded()) throw ended();
        if (lines_.isTooLong()) throw tooLong();
    }
}

}
