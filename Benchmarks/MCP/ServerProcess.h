#pragma once

#include <TavaroCore/Records/JSONValue.h>
#include <TavaroPlatform/Processes/ConnectedProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace tavaro {

/// `tavaro-mcp` as its client has it. Failures are `std::runtime_error`s.
class ServerProcess {
public:
    ServerProcess();

    /// Sends a line and waits for its answer, which is good until the next.
    std::string_view ask(std::string const& line);
    /// The same where the answer must hold a text.
    void expect(std::string const& line, std::string_view part);
    /// The name that the application knows its client by.
    void introduce(std::string const& client);
    /// A whole call, whose result may not be a failure: its line.
    std::string_view call(std::string_view tool, JSONValue::Object const& arguments);

private:
    static constexpr std::size_t longestLine = std::size_t{16} << 20;

    ConnectedProcess process_;
    LineReader lines_{process_.socket(), longestLine};
};

}
