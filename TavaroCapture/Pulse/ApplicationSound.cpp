#include <TavaroCapture/Pulse/Private/ApplicationSound.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace tavaro::pulse {

namespace {

using namespace std::chrono_literals;

constexpr auto longestConnect = 2s;
constexpr auto betweenLooks = 100ms;
constexpr auto turn = 10ms;
// A playback that just began is timed and delivered by then.
constexpr double patience = 0.5;

}

ApplicationSound::ApplicationSound(std::string server, std::string application)
    : server_(std::move(server))
    , application_(std::move(application)) {
    Server answering(server_);
    if (!answering.connect(longestConnect))
        throw CaptureError(CaptureError::Kind::noSound,
                           fmt::format("The sound of “{}” cannot be recorded: no sound server answers ({}).",
                                       application_, answering.reason()));
}

ApplicationSound::~ApplicationSound() { stop(); }

void ApplicationSound::start(SoundHandlers handlers) {
    handlers_ = std::move(handlers);
    heardUntil_ = mediaClockNow();
    mix_.begin(heardUntil_);
    queue_.async([this] { run(); });
}

void ApplicationSound::stop() {
    if (!isEnding_) endsAt_ = mediaClockNow();
    isEnding_ = true;
    queue_.sync([] {});
}

void ApplicationSound::run() {
    bool isAway = false;
    while (!isEnding_) {
        Server server(server_, [this] { return isEnding_.load(); });
        bool const isThere = server.connect(longestConnect);
        if (auto const info = isThere ? server.info() : std::nullopt) {
            if (std::exchange(isAway, false)) {
                heardUntil_ = mediaClockNow();
                mix_.begin(heardUntil_);
                handlers_.returned(heardUntil_);
            }
            record(server, info->isPipeWire ? Timing::arrivals : Timing::latencies);
        }
        if (isEnding_) return;
        if (!std::exchange(isAway, true)) handlers_.lost(heardUntil_);
        server.run(betweenLooks);
    }
}

/// Until the end, or until the server is gone.
void ApplicationSound::record(Server& server, Timing timing) {
    auto looksAgain = Server::Clock::now();
    auto const isOver = [this] { return isEnding_ && mediaClockNow() - endsAt_ > patience / 2; };
    while (server.isAlive() && !isOver()) {
        if (!isEnding_ && Server::Clock::now() >= looksAgain) {
            follow(server, timing);
            looksAgain = Server::Clock::now() + betweenLooks;
        }
        server.run(turn);
        for (auto const& [number, stream] : streams_) stream->tend();
        handOn(mediaClockNow() - patience);
    }
    streams_.clear();
    handOn(isEnding_ ? endsAt_.load() : mediaClockNow());
}

/// Streams for the playbacks that there are.
void ApplicationSound::follow(Server& server, Timing timing) {
    auto const playbacks = server.playbacks();
    auto const isThere = [&](std::uint32_t number) {
        return std::ranges::any_of(playbacks, [&](Playback const& playback) { return playback.number == number; });
    };
    std::erase_if(streams_, [&](auto const& known) { return !isThere(known.first) || !known.second->isLive(); });
    for (auto const& playback : playbacks) {
        if (streams_.contains(playback.number) || !playback.isOf(application_)) continue;
        hasPlayed_ = true;
        RecordStream::Options const options{
            .source = playback.monitor, .title = "System audio", .timing = timing, .playback = playback.number};
        streams_.emplace(playback.number, std::make_unique<RecordStream>(
                                              server, options, [this](SoundBlock const& block) { mix_.add(block); }));
    }
}

void ApplicationSound::handOn(double until) {
    mix_.take(until, handlers_.block);
    heardUntil_ = std::max(heardUntil_, until);
}

}
