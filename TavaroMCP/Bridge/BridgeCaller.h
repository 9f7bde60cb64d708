#pragma once

#include <TavaroCore/Records/JSONText.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

/// The program that answers agents here, and how it is started for one: with windows where there is a display and it is
/// installed, else without. Empty where there is neither.
std::vector<std::string> applicationCommand();

/// The server's side of the bridge: asks the application, which it starts when nobody listens. A call has a connection
/// of its own.
class BridgeCaller {
public:
    struct Settings {
        std::filesystem::path socket;
        std::vector<std::string> command = applicationCommand();
        std::chrono::milliseconds betweenTries{250};
        std::chrono::milliseconds timeToStart{20'000};
        std::chrono::milliseconds timeAfterFailure{2'000}; // of the one that was started
    };
    using Progress = std::function<void(double fraction, std::string const& message)>;
    struct Call {
        std::string tool;
        JSONText arguments = JSONValue::Object{};
        std::string client;
        std::stop_token cancelled = {}; // the application sees that nobody waits any more
    };

    explicit BridgeCaller(Settings settings) : settings_(std::move(settings)) {}

    /// One thread, which it holds until the result is there. What goes wrong is a result too.
    JSONText call(Call call, Progress const& progress) const;

private:
    Settings settings_;
};

}
