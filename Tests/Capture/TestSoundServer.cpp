#include "TestSoundServer.h"

#include "TestDisplay.h"

#include <TavaroCapture/Pulse/Private/PulseServer.h>
#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

using namespace std::chrono_literals;

namespace {

constexpr std::int64_t between = static_cast<std::int64_t>(Clicks::apart * audioRate);
constexpr float loudness = 0.9f;

std::string microphoneModule(std::string const& pipe) {
    return "module-pipe-source source_name=mic source_properties=device.description=Desk file=" + pipe +
           " format=float32le rate=48000 channels=2";
}

}

TestSoundServer::TestSoundServer() {
    auto pattern = (std::filesystem::temp_directory_path() / "tavaro-sound-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
    folder_ = pattern;
    start();
}

TestSoundServer::~TestSoundServer() {
    kill();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

bool TestSoundServer::isInstalled() {
    return std::system("command -v pulseaudio >/dev/null 2>&1 && command -v pactl >/dev/null 2>&1") == 0;
}

void TestSoundServer::start() {
    auto const home = folder_.string();
    auto const protocol = "module-native-protocol-unix auth-anonymous=1 socket=" + socket();
    auto const microphone = microphoneModule(microphonePipe());
    process_ = fork();
    if (process_ == 0) {
        for (auto const* const name : {"XDG_RUNTIME_DIR", "HOME", "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"})
            setenv(name, home.c_str(), 1);
        int const quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, 1);
        dup2(quiet, 2);
        execlp("pulseaudio", "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1", "-L",
               protocol.c_str(), "-L", "module-null-sink sink_name=out rate=48000", "-L", microphone.c_str(), nullptr);
        _exit(127);
    }
    bool const answers = eventually([this] {
        pulse::Server server(address());
        return server.connect(100ms) && server.sources().size() == 2;
    });
    if (!answers) throw std::runtime_error("pulseaudio did not start");
}

void TestSoundServer::kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    unlink(socket().c_str()); // a killed server leaves these behind, and one that starts wants them new
    unlink(microphonePipe().c_str());
    process_ = -1;
}

void TestSoundServer::freeze() const { ::kill(process_, SIGSTOP); }
void TestSoundServer::thaw() const { ::kill(process_, SIGCONT); }

std::string TestSoundServer::order(std::string const& words) const {
    std::string const command = "pactl -s " + address() + " " + words + " 2>&1";
    std::string answer;
    FILE* const pipe = popen(command.c_str(), "r");
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) answer += static_cast<char>(c);
    pclose(pipe);
    return answer;
}

void TestSoundServer::plugMicrophone() { order("load-module " + microphoneModule(microphonePipe())); }
void TestSoundServer::unplugMicrophone() { order("unload-module module-pipe-source"); }

SpokenClicks::SpokenClicks(std::string pipe, double ppm, double every)
    : thread_([this, pipe = std::move(pipe), ppm, every] {
        speak(pipe, audioRate * (1 + ppm * 1e-6), static_cast<std::int64_t>(every * audioRate));
    }) {}

SpokenClicks::~SpokenClicks() {
    isEnding_ = true;
    thread_.join();
}

/// A millisecond at a time. What nobody reads is lost, as it is on a microphone.
void SpokenClicks::speak(std::string const& pipe, double rate, std::int64_t gap) {
    constexpr std::int64_t block = audioRate / 1000;
    signal(SIGPIPE, SIG_IGN);
    int end = -1;
    double const start = mediaClockNow();
    for (std::int64_t frame = 0; !isEnding_; frame += block) {
        double const due = start + static_cast<double>(frame + block) / rate; // when its last sample was said
        if (double const wait = due - mediaClockNow(); wait > 0) usleep(static_cast<useconds_t>(wait * 1e6));
        std::array<StereoSample, block> samples{};
        auto const first = frame % gap;
        if (first == gap / 2) samples.fill({loudness, loudness});
        if (end < 0) end = open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        bool const isHeard = end >= 0 && write(end, samples.data(), sizeof samples) == ssize_t{sizeof samples};
        if (isHeard && first == gap / 2) note(start + static_cast<double>(frame) / rate);
        if (isHeard || end < 0) continue;
        close(end);
        end = -1;
    }
    if (end >= 0) close(end);
}

PlayedClicks::PlayedClicks(std::string server, std::string application)
    : thread_([this, server = std::move(server), application = std::move(application)] { play(server, application); }) {
}

PlayedClicks::~PlayedClicks() {
    isEnding_ = true;
    thread_.join();
}

void PlayedClicks::play(std::string const& address, std::string const& application) {
    pulse::Server server(address);
    if (!server.connect(2s)) return;
    pa_sample_spec const format{PA_SAMPLE_FLOAT32NE, audioRate, 2};
    auto* const properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, application.c_str());
    pulse::Stream const stream(pa_stream_new_with_proplist(server.get(), "clicks", &format, nullptr, properties));
    pa_proplist_free(properties);
    constexpr auto usual = static_cast<std::uint32_t>(-1);
    pa_buffer_attr const buffers{usual, static_cast<std::uint32_t>(pa_usec_to_bytes(60'000, &format)), usual, usual,
                                 usual};
    auto const flags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING |
                                                      PA_STREAM_AUTO_TIMING_UPDATE);
    pa_stream_connect_playback(stream.get(), nullptr, &buffers, flags, nullptr, nullptr);
    for (std::int64_t frame = 0; !isEnding_ && server.isAlive();) {
        server.run(10ms);
        auto const bytes = pa_stream_get_state(stream.get()) == PA_STREAM_READY ? pa_stream_writable_size(stream.get())
                                                                                : std::size_t{0};
        if (bytes == 0 || bytes == static_cast<std::size_t>(-1)) continue;
        std::vector<StereoSample> samples(bytes / sizeof(StereoSample));
        pa_usec_t latency = 0;
        int isNegative = 0;
        bool const isKnown = pa_stream_get_latency(stream.get(), &latency, &isNegative) == 0;
        double const heard = mediaClockNow() + (isNegative ? -1e-6 : 1e-6) * static_cast<double>(latency);
        for (std::size_t i = 0; i < samples.size(); ++i, ++frame) {
            auto const place = frame % between - between / 2;
            if (place >= 0 && place < audioRate / 1000) samples[i] = {loudness, loudness};
            if (place == 0 && isKnown) note(heard + static_cast<double>(i) / audioRate);
        }
        pa_stream_write(stream.get(), samples.data(), samples.size() * sizeof(StereoSample), nullptr, 0,
                        PA_SEEK_RELATIVE);
    }
}

}
