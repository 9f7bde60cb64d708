#include "TestService.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace tavaro {

using namespace std::chrono_literals;

TestService::TestService(std::vector<std::string> const& options) {
    std::vector<std::string> command{"/usr/bin/env", "python3", TAVARO_TESTS "/Voice/ElevenLabs/service"};
    command.insert(command.end(), options.begin(), options.end());
    auto started = ConnectedProcess::start(command);
    if (!started) throw std::runtime_error("the test service does not start");
    process_.emplace(std::move(*started));
    lines_.emplace(process_->socket(), 1 << 20);
    port_ = lines_->next(20s).value_or("");
    if (port_.empty()) throw std::runtime_error("the test service does not say where it is");
}

std::vector<JSONValue> TestService::requests() {
    std::vector<JSONValue> requests;
    while (auto const line = lines_->next(200ms)) requests.push_back(JSONValue::parse(*line));
    return requests;
}

}
