#include "ServerProcess.h"

#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>
#include <stdexcept>
#include <utility>

namespace tavaro {

namespace {

ConnectedProcess startServer() {
    auto process = ConnectedProcess::start({TAVARO_MCP});
    if (!process) throw std::runtime_error("tavaro-mcp cannot be started.");
    return *std::move(process);
}

}

ServerProcess::ServerProcess() : process_(startServer()) {}

std::string_view ServerProcess::ask(std::string const& line) {
    if (!process_.socket().sendAll(line, UnixSocket::forever)) throw std::runtime_error("tavaro-mcp takes nothing.");
    if (auto const answer = lines_.next(UnixSocket::forever)) return *answer;
    throw std::runtime_error("tavaro-mcp ended.");
}

void ServerProcess::expect(std::string const& line, std::string_view part) {
    auto const answer = ask(line);
    if (answer.find(part) == answer.npos)
        throw std::runtime_error("Not expected: " + std::string(answer.substr(0, 1000)));
}

void ServerProcess::introduce(std::string const& client) {
    auto const line = R"({{"id":1,"method":"initialize","params":{{"clientInfo":{{"name":"{}"}}}}}})";
    expect(fmt::format(fmt::runtime(line), client) + "\n", "serverInfo");
}

std::string_view ServerProcess::call(std::string_view tool, JSONValue::Object const& arguments) {
    JSONValue::Object const params{{"name", tool}, {"arguments", arguments}};
    JSONValue const message = JSONValue::Object{{"id", 2}, {"method", "tools/call"}, {"params", params}};
    auto const answer = ask(encodeJSON(message) + "\n");
    if (answer.find("\"isError\":false") != answer.npos) return answer;
    throw std::runtime_error(fmt::format("{} failed: {}", tool, answer.substr(0, 1000)));
}

}
