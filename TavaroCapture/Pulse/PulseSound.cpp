#include <TavaroCapture/Pulse/Private/PulseSound.h>

#include <TavaroCapture/PipeWire/Private/SoundInput.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace tavaro::pulse {

namespace {

using namespace std::chrono_literals;

constexpr auto longestConnect = 2s;
constexpr auto longestStart = 2s;
constexpr auto betweenLooks = 100ms;
constexpr auto turn = 10ms;
constexpr double longestEnd = 0.1; // what was captured before the end arrives by then

[[noreturn]] void fail(std::string const& sentence) { throw CaptureError(CaptureError::Kind::noSound, sentence); }

bool has(std::vector<SourceInfo> const& sources, std::string const& name) {
    return std::ranges::any_of(sources, [&](SourceInfo const& source) { return source.name == name; });
}

/// The microphone of that name, or the default one. What an output plays is no microphone, also where it is the
/// default.
std::string microphoneNamed(Server& server, ServerInfo const& info, std::string const& name) {
    auto sources = server.sources();
    if (has(sources, name)) return name;
    if (!name.empty()) fail(fmt::format("There is no microphone “{}”. `tavaro sources` lists those there are.", name));
    std::erase_if(sources, [](SourceInfo const& source) { return source.isMonitor; });
    if (sources.empty()) fail("There is no microphone.");
    return has(sources, info.defaultSource) ? info.defaultSource : sources.front().name;
}

std::string outputNamed(Server& server, ServerInfo const& info, std::string const& name) {
    if (!name.empty()) return name;
    auto monitor = server.monitorOf(info.defaultSink);
    if (monitor.empty()) fail("There is no output whose sound could be recorded.");
    return monitor;
}

std::string sourceNamed(PulseSound::Options const& options) {
    Server server(options.server);
    auto const info = server.connect(longestConnect) ? server.info() : std::nullopt;
    if (!info)
        fail(fmt::format("The {} cannot be recorded: no sound server answers ({}).", spokenName(options.role),
                         server.reason()));
    auto const find = options.role == StreamRole::microphone ? microphoneNamed : outputNamed;
    return find(server, *info, options.source);
}

}

PulseSound::PulseSound(Options const& options)
    : server_(options.server)
    , role_(options.role)
    , source_(sourceNamed(options))
    , followsDefault_(options.role == StreamRole::systemSound && options.source.empty())
    , queue_(fmt::format("com.tavaro.capture.{}", nameOf(role_)), SerialQueue::Urgency::prompt) {}

PulseSound::~PulseSound() { stop(); }

void PulseSound::start(SoundHandlers handlers) {
    handlers_ = std::move(handlers);
    heardUntil_ = mediaClockNow();
    queue_.async([this] { run(); });
    std::unique_lock lock(mutex_);
    begun_.wait_for(lock, longestStart, [this] { return hasBegun_; });
}

void PulseSound::stop() {
    if (!isEnding_) endsAt_ = mediaClockNow();
    isEnding_ = true;
    queue_.sync([] {});
}

bool PulseSound::isDone(double deliveredUntil) const {
    if (!isEnding_) return false;
    return deliveredUntil >= endsAt_ || mediaClockNow() - endsAt_ > longestEnd;
}

/// Until the end, whatever happens to server and device.
void PulseSound::run() {
    while (!isEnding_) {
        Server server(server_, [this] { return isEnding_.load(); });
        bool const isThere = server.connect(longestConnect);
        if (auto const info = isThere ? server.info() : std::nullopt) record(server, *info);
        if (isEnding_) return;
        noteGone();
        idle(server);
    }
}

void PulseSound::record(Server& server, ServerInfo const& info) {
    while (server.isAlive() && !isEnding_) {
        findOutput(server);
        if (has(server.sources(), source_) && listen(server, info)) return;
        if (isEnding_) return;
        noteGone();
        idle(server);
    }
}

/// True when the end has come, false when the device is gone.
bool PulseSound::listen(Server& server, ServerInfo const& info) {
    if (auto const connection = connectionTo(info)) return listen(server, *connection);
    RecordStream stream(
        server, {.source = source_, .title = title(), .timing = info.isPipeWire ? Timing::arrivals : Timing::latencies},
        [this](SoundBlock const& block) { handOn(block); });
    while (stream.isLive()) {
        server.run(turn);
        stream.tend();
        if (stream.isQuiet()) noteGone();
        if (isDone(stream.deliveredUntil())) return true;
        if (isElsewhere(server)) return false;
    }
    return false;
}

/// None where it is no PipeWire server, or not the one of this session: on another machine, say.
std::unique_ptr<pipewire::Connection> PulseSound::connectionTo(ServerInfo const& info) const {
    if (!info.isPipeWire) return nullptr;
    auto connection = std::make_unique<pipewire::Connection>();
    bool const isSame = connection->settle(longestConnect) && connection->cookie() == info.cookie;
    return isSame ? std::move(connection) : nullptr;
}

bool PulseSound::listen(Server& server, pipewire::Connection& connection) {
    constexpr std::string_view monitor = ".monitor"; // which PulseAudio's protocol adds to an output's name
    bool const isOutput = source_.ends_with(monitor);
    auto const kind = isOutput ? pipewire::SoundInput::Kind::output : pipewire::SoundInput::Kind::microphone;
    pipewire::SoundInput input(connection,
                               {.node = isOutput ? source_.substr(0, source_.size() - monitor.size()) : source_,
                                .kind = kind,
                                .title = title()},
                               [this](SoundBlock const& block) { handOn(block); });
    while (input.isLive() && server.isAlive()) {
        server.run(turn);
        connection.run(0ms);
        input.tend();
        if (isDone(input.deliveredUntil())) return true;
        if (isElsewhere(server)) return false;
    }
    return false;
}

void PulseSound::handOn(SoundBlock const& block) {
    noteBegun(block.capturedAt);
    handlers_.block(block);
    heardUntil_ = block.capturedAt + static_cast<double>(block.samples.size()) / audioRate;
}

std::string PulseSound::title() const { return role_ == StreamRole::microphone ? "Microphone" : "System audio"; }

void PulseSound::findOutput(Server& server) {
    if (!followsDefault_) return;
    server.hasOtherOutputs(); // what comes from here on is news
    auto const info = server.info();
    auto const monitor = info ? server.monitorOf(info->defaultSink) : std::string();
    if (!monitor.empty()) source_ = monitor;
}

bool PulseSound::isElsewhere(Server& server) {
    if (!followsDefault_ || !server.hasOtherOutputs()) return false;
    auto const info = server.info();
    auto const monitor = info ? server.monitorOf(info->defaultSink) : std::string();
    return !monitor.empty() && monitor != source_;
}

void PulseSound::idle(Server& server) const {
    auto const end = Server::Clock::now() + betweenLooks;
    while (!isEnding_ && Server::Clock::now() < end) server.run(turn);
}

void PulseSound::noteBegun(double at) {
    if (std::exchange(isAway_, false)) handlers_.returned(at);
    std::lock_guard const guard(mutex_);
    hasBegun_ = true;
    begun_.notify_all();
}

void PulseSound::noteGone() {
    if (!std::exchange(isAway_, true)) handlers_.lost(heardUntil_);
}

}
