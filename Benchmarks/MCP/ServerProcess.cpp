#include "ServerProcess.h"

#include <TavaroCore/Records/JSON.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <span>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

ServerProcess::ServerProcess() {
    int input[2], output[2];
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error("There are no pipes.");
    process_ = fork();
    if (process_ == 0) {
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        execl(TAVARO_MCP, "tavaro-mcp", nullptr);
        _exit(127);
    }
    close(input[0]);
    close(output[1]);
    in_ = FileDescriptor(input[1]);
    out_ = FileDescriptor(output[0]);
}

ServerProcess::~ServerProcess() {
    in_.close();
    waitpid(process_, nullptr, 0);
}

std::string_view ServerProcess::ask(std::string const& line) {
    if (in_.write(std::as_bytes(std::span(line))) != 0) throw std::runtime_error("tavaro-mcp takes nothing.");
    while (true) {
        if (auto const answer = lines_.next()) return *answer;
        auto const count = read(out_.get(), room_.data(), room_.size());
        if (count <= 0) throw std::runtime_error("tavaro-mcp ended.");
        lines_.feed({room_.data(), static_cast<std::size_t>(count)});
    }
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
