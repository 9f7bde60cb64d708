#include <TavaroCapture/Pulse/Private/PulseServer.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace tavaro::pulse {

namespace {

using namespace std::chrono_literals;

constexpr auto longestAnswer = 1s;

std::string textOf(char const* text) { return text ? text : ""; }

bool isSame(std::string_view a, std::string_view b) {
    auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, [&](char x, char y) { return lower(x) == lower(y); });
}

}

bool Playback::isOf(std::string_view name) const {
    return isSame(name, application) || isSame(name, program) || isSame(name, id);
}

Server::Server(std::string const& address, std::function<bool()> isOver)
    : isOver_(std::move(isOver))
    , loop_(pa_mainloop_new())
    , context_(pa_context_new(pa_mainloop_get_api(loop_.get()), "Tavaro")) {
    pa_context_connect(context_.get(), address.empty() ? nullptr : address.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
}

Server::~Server() = default;

bool Server::connect(std::chrono::milliseconds atMost) {
    auto const end = Clock::now() + atMost;
    while (isAlive() && pa_context_get_state(get()) != PA_CONTEXT_READY) {
        if (Clock::now() >= end || isOver_()) return false;
        run(20ms);
    }
    return isAlive();
}

bool Server::isAlive() const { return PA_CONTEXT_IS_GOOD(pa_context_get_state(get())); }

std::string Server::reason() const { return pa_strerror(pa_context_errno(get())); }

void Server::run(std::chrono::milliseconds atMost) {
    auto const wait = static_cast<int>(std::chrono::microseconds(atMost).count());
    if (pa_mainloop_prepare(loop_.get(), wait) >= 0 && pa_mainloop_poll(loop_.get()) >= 0)
        pa_mainloop_dispatch(loop_.get());
}

bool Server::finish(pa_operation* operation) {
    Operation const owned(operation);
    auto const end = Clock::now() + longestAnswer;
    auto const mayWait = [&] { return isAlive() && !isOver_() && Clock::now() < end; };
    while (owned && pa_operation_get_state(operation) == PA_OPERATION_RUNNING && mayWait()) run(20ms);
    if (!owned) return false;
    bool const isDone = pa_operation_get_state(operation) == PA_OPERATION_DONE;
    if (!isDone) pa_operation_cancel(operation); // or it would answer into what is gone
    return isDone;
}

std::optional<ServerInfo> Server::info() {
    ServerInfo result;
    auto const take = [](pa_context*, pa_server_info const* info, void* into) {
        if (!info) return;
        auto& result = *static_cast<ServerInfo*>(into);
        result.defaultSource = textOf(info->default_source_name);
        result.defaultSink = textOf(info->default_sink_name);
        result.cookie = info->cookie;
        result.isPipeWire = std::string_view(textOf(info->server_name)).find("PipeWire") != std::string_view::npos;
    };
    if (!finish(pa_context_get_server_info(get(), take, &result))) return std::nullopt;
    return result;
}

std::vector<SourceInfo> Server::sources() {
    std::vector<SourceInfo> result;
    auto const take = [](pa_context*, pa_source_info const* info, int, void* into) {
        if (!info) return;
        static_cast<std::vector<SourceInfo>*>(into)->push_back(
            {textOf(info->name), textOf(info->description), info->monitor_of_sink != PA_INVALID_INDEX});
    };
    finish(pa_context_get_source_info_list(get(), take, &result));
    return result;
}

std::vector<Playback> Server::playbacks() {
    struct Found {
        std::vector<Playback> playbacks;
        std::vector<std::uint32_t> sinks; // on which they play
        std::map<std::uint32_t, std::string> monitors;
    } found;
    auto const takePlayback = [](pa_context*, pa_sink_input_info const* info, int, void* into) {
        if (!info) return;
        auto const property = [info](char const* name) { return textOf(pa_proplist_gets(info->proplist, name)); };
        auto& result = *static_cast<Found*>(into);
        result.playbacks.push_back({.number = info->index,
                                    .application = property(PA_PROP_APPLICATION_NAME),
                                    .program = property(PA_PROP_APPLICATION_PROCESS_BINARY),
                                    .id = property(PA_PROP_APPLICATION_ID)});
        result.sinks.push_back(info->sink);
    };
    auto const takeSink = [](pa_context*, pa_sink_info const* info, int, void* into) {
        if (info) static_cast<Found*>(into)->monitors[info->index] = textOf(info->monitor_source_name);
    };
    finish(pa_context_get_sink_input_info_list(get(), takePlayback, &found));
    finish(pa_context_get_sink_info_list(get(), takeSink, &found));
    for (std::size_t i = 0; i < found.playbacks.size(); ++i)
        found.playbacks[i].monitor = found.monitors[found.sinks[i]];
    return std::move(found.playbacks);
}

bool Server::hasOtherOutputs() {
    if (outputs_ == Watch::none) {
        auto const note = [](pa_context*, pa_subscription_event_type_t, std::uint32_t, void* into) {
            *static_cast<Watch*>(into) = Watch::changed;
        };
        pa_context_set_subscribe_callback(get(), note, &outputs_);
        auto const mask = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SINK);
        Operation const asked(pa_context_subscribe(get(), mask, nullptr, nullptr));
        outputs_ = Watch::quiet;
    }
    return std::exchange(outputs_, Watch::quiet) == Watch::changed;
}

std::string Server::monitorOf(std::string const& sink) {
    std::string result;
    auto const take = [](pa_context*, pa_sink_info const* info, int, void* into) {
        if (info) *static_cast<std::string*>(into) = textOf(info->monitor_source_name);
    };
    finish(pa_context_get_sink_info_by_name(get(), sink.c_str(), take, &result));
    return result;
}

}
