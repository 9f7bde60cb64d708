#pragma once

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace tavaro {

/// `tavaro-mcp` as its client has it: a process, and lines through its pipes. Failures are `std::runtime_error`s.
class ServerProcess {
public:
    ServerProcess();
    ~ServerProcess();
    ServerProcess(ServerProcess const&) = delete;
    ServerProcess& operator=(ServerProcess const&) = delete;

    /// Sends a line and waits for its answer, which is good until the next.
    std::string_view ask(std::string const& line);
    /// The same where the answer must hold a text.
    void expect(std::string const& line, std::string_view part);
    /// The name that the application knows its client by.
    void introduce(std::string const& client);
    /// A whole call, whose result may not be a failure: its line.
    std::string_view call(std::string_view tool, JSONValue::Object const& arguments);

private:
    pid_t process_ = 0;
    FileDescriptor in_, out_;
    LineSplitter lines_{std::size_t{16} << 20};
    std::vector<char> room_ = std::vector<char>(std::size_t{1} << 16);
};

}
