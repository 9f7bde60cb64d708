#pragma once

#include <TavaroCore/Records/JSONValue.h>
#include <TavaroPlatform/Processes/ConnectedProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// The voice service on this machine, over a real connection; it ends with the object. What it answers, the program
/// beside this says.
class TestService {
public:
    /// `options` are the program's.
    explicit TestService(std::vector<std::string> const& options = {});

    /// Without a scheme: "localhost:4711".
    std::string place() const { return "localhost:" + port_; }
    std::string host() const { return "http://" + place(); }
    /// The requests since the last call, in the order in which they came.
    std::vector<JSONValue> requests();

private:
    std::optional<ConnectedProcess> process_;
    std::optional<LineReader> lines_;
    std::string port_;
};

}
