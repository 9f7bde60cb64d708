// Recording a 1080p screen at 60 frames a second, beside FFmpeg's screen grabber with the same encoder settings, on a
// virtual display where something always moves. Prints one line a figure: name, value, unit.

#include "MovingScreen.h"

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <functional>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tavaro;

namespace {

constexpr double takeSeconds = 11; // one change of segments

pid_t inProcess(std::function<void()> const& job) {
    std::fflush(stdout);
    pid_t const child = fork();
    if (child != 0) return child;
    try {
        job();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "bench-record: %s\n", error.what());
        _exit(1);
    }
    _exit(0);
}

/// Waits for a process; its processor seconds.
double processorSeconds(pid_t process) {
    int status = 0;
    rusage usage{};
    wait4(process, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "bench-record: one side failed\n");
        std::exit(1);
    }
    auto const seconds = [](timeval const& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

pid_t startServer(std::string& display) {
    int ends[2];
    if (pipe(ends) != 0) std::exit(1);
    pid_t const server = inProcess([&] {
        dup2(open("/dev/null", O_WRONLY), 2);
        auto const screen = fmt::format("{}x{}x24", movingScreenWidth, movingScreenHeight);
        execlp("Xvfb", "Xvfb", "-displayfd", std::to_string(ends[1]).c_str(), "-screen", "0", screen.c_str(),
               "-nolisten", "tcp", "-noreset", nullptr);
        throw std::runtime_error("Xvfb is not installed");
    });
    close(ends[1]);
    display.assign(1, ':');
    for (char c; read(ends[0], &c, 1) == 1 && c != '\n';) display += c;
    close(ends[0]);
    if (display.size() < 2) std::exit(1);
    return server;
}

struct Counts {
    std::int64_t written = 0;
    std::int64_t lost = 0;
};

void record(std::string const& display, std::filesystem::path const& folder, int out) {
    ScreenRecorder recorder({.display = display, .recordingsFolder = folder});
    recorder.start();
    recorder.waitForEnd(std::chrono::milliseconds(static_cast<int>(takeSeconds * 1000)));
    auto const health = recorder.stop().metadata.health;
    Counts const counts{health.framesWritten, health.droppedFrames + health.writerRejectedFrames};
    if (write(out, &counts, sizeof counts) != sizeof counts) throw std::runtime_error("no way to tell the counts");
}

void grabWithFFmpeg(std::string const& display, std::filesystem::path const& folder) {
    auto const movie = (folder / "grabbed.mov").string();
    auto const size = fmt::format("{}x{}", movingScreenWidth, movingScreenHeight);
    auto const seconds = fmt::format("{}", takeSeconds);
    execlp("ffmpeg", "ffmpeg", "-y", "-loglevel", "error", "-f", "x11grab", "-draw_mouse", "0", "-framerate", "60",
           "-video_size", size.c_str(), "-t", seconds.c_str(), "-i", display.c_str(), "-c:v", "libx264", "-preset",
           "ultrafast", "-tune", "zerolatency", "-crf", "18", "-profile:v", "high", "-threads", "1", "-g", "120",
           "-pix_fmt", "yuv420p", "-movflags", "+empty_moov+default_base_moof", "-frag_duration", "500000",
           movie.c_str(), nullptr);
    throw std::runtime_error("ffmpeg is not installed");
}

}

int main() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavaro-bench-XXXXXX").string();
    if (!mkdtemp(pattern.data())) return 1;
    std::filesystem::path const folder = pattern;
    std::string display;
    pid_t const server = startServer(display);
    pid_t const painter = inProcess([&] { paintForever(display); });

    double const theirs = processorSeconds(inProcess([&] { grabWithFFmpeg(display, folder); }));
    auto const theirFrames = MovieReader(folder / "grabbed.mov").info().frameCount.value_or(0);
    int ends[2];
    if (pipe(ends) != 0) return 1;
    double const ours = processorSeconds(inProcess([&] { record(display, folder, ends[1]); }));
    Counts counts;
    if (read(ends[0], &counts, sizeof counts) != sizeof counts) return 1;
    kill(painter, SIGKILL);
    kill(server, SIGTERM);
    waitpid(painter, nullptr, 0);
    waitpid(server, nullptr, 0);
    std::filesystem::remove_all(folder);

    // By the frame: on a busy machine each side loses frames, and with them work.
    auto const perFrame = [](double seconds, std::int64_t frames) {
        return seconds * 1000 / static_cast<double>(std::max<std::int64_t>(frames, 1));
    };
    auto const percentOf = [](std::int64_t part, double whole) { return 100 * static_cast<double>(part) / whole; };
    double const due = takeSeconds * 60;
    fmt::print("record.1080p60 {:.3f} x\n", perFrame(ours, counts.written) / perFrame(theirs, theirFrames));
    fmt::print("record.1080p60.cpu {:.2f} ms/frame\n", perFrame(ours, counts.written));
    fmt::print("record.1080p60.cpu_ffmpeg {:.2f} ms/frame\n", perFrame(theirs, theirFrames));
    fmt::print("record.1080p60.frames_lost {:.3f} %\n",
               percentOf(counts.lost, static_cast<double>(counts.lost + counts.written)));
    fmt::print("record.1080p60.frames_lost_ffmpeg {:.3f} %\n", std::max(0.0, 100 - percentOf(theirFrames, due)));
}
