#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroPlatform/Processes/ConnectedProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace tavaro {

class MCPClientError : public Error {
public:
    enum class Kind { cannotStart, ended, misspoken, cancelled };
    MCPClientError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}

    Kind const kind;
};

/// A conversation with a server of tools that is started for it and ends with it. One thread, which waits.
class MCPClient {
public:
    struct Settings {
        std::filesystem::path server;
        std::string name; // under which the user's consent is looked for
        std::string version;
    };
    struct Watch {
        std::function<void(double fraction, std::string const& message)> progress;
        std::function<bool()> isCancelled; // asked about every 50 ms
    };

    /// Throws `MCPClientError`, as does `call`.
    MCPClient(Settings const& settings, Watch const& watch);

    /// The tool's result, which may be a failure. Where it is cancelled the server goes on with it; this conversation
    /// is then of no more use.
    JSONValue call(std::string_view tool, JSONValue::Object arguments, Watch const& watch);

private:
    static constexpr std::size_t longestLine = std::size_t{16} << 20;

    void send(JSONValue::Object message) const;
    JSONValue ask(std::string_view method, JSONValue::Object parameters, Watch const& watch);
    JSONValue nextMessage(Watch const& watch);
    std::string_view nextLine(Watch const& watch);

    ConnectedProcess process_;
    LineReader lines_;
    std::int64_t last_ = 0; // request
};

}
