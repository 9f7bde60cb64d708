#include <Tavaro/Control/TakeCaller.h>

#include <Tavaro/Control/Private/ControlVerbs.h>
#include <Tavaro/Control/Private/QuickCall.h>

#include <TavaroCore/Records/JSONValue.h>

#include <algorithm>
#include <cstdint>
#include <optional>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

std::optional<RunningTake> takeAt(fs::path const& socket) {
    auto const details = quickCall(socket, control::takeState);
    if (!details) return std::nullopt;
    JSONValue const answer{*details};
    auto const* const phase = answer.find<std::string>("phase");
    auto const* const milliseconds = answer.find<std::int64_t>("milliseconds");
    auto const known = phase ? enumNamed<RecorderPhase>(*phase) : std::nullopt;
    if (!known || !milliseconds || *known == RecorderPhase::idle) return std::nullopt;
    return RunningTake{socket, *known, static_cast<double>(*milliseconds) / 1000};
}

}

std::vector<RunningTake> runningTakes(fs::path const& folder) {
    std::vector<RunningTake> takes;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(folder, ignored)) {
        if (!fs::is_socket(entry.path(), ignored)) continue;
        if (auto const take = takeAt(entry.path())) takes.push_back(*take);
    }
    std::ranges::sort(takes, {}, &RunningTake::socket);
    return takes;
}

void orderTake(fs::path const& take, TakeOrder order) {
    quickCall(take, order == TakeOrder::pause ? control::pauseTake : control::stopTake);
}

}
