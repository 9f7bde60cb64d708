// Recording a 1080p screen at 60 frames a second, beside FFmpeg's screen grabber with the same encoder settings, on a
// virtual display where something always moves. Prints one line a figure: name, value, unit.

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/X11/Connection.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <functional>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace tavaro;

namespace {

constexpr int width = 1920;
constexpr int height = 1080;
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
        auto const screen = fmt::format("{}x{}x24", width, height);
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

/// A page of text-like strokes that scrolls in most of the screen, and a box that crosses it, 60 times a second.
void paintForever(std::string const& display) {
    x11::Connection connection(display);
    auto* const c = connection.get();
    std::uint32_t const window = xcb_generate_id(c);
    std::uint32_t const values[] = {0xffffff, 1};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, connection.root(), 0, 0, width, height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                      values);
    xcb_map_window(c, window);
    std::uint32_t const pen = xcb_generate_id(c);
    xcb_create_gc(c, pen, window, 0, nullptr);
    auto const fill = [&](int x, int y, int w, int h, std::uint32_t color) {
        xcb_change_gc(c, pen, XCB_GC_FOREGROUND, &color);
        xcb_rectangle_t const area{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                   static_cast<std::uint16_t>(w), static_cast<std::uint16_t>(h)};
        xcb_poly_fill_rectangle(c, window, pen, 1, &area);
    };
    unsigned random = 1;
    auto const next = [&](int limit) {
        return static_cast<int>((random = random * 1664525u + 1013904223u) >> 16) % limit;
    };
    double const start = mediaClockNow();
    for (long frame = 0;; ++frame) {
        constexpr int scroll = 3;
        xcb_copy_area(c, window, window, pen, 100, 100 + scroll, 100, 100, 1400, 880 - scroll);
        fill(100, 980 - scroll, 1400, scroll, 0xffffff);
        if (frame % 7 < 4) {
            for (int i = 0; i < 120; ++i) fill(110 + next(1380), 980 - scroll, 1 + next(8), scroll, 0x202020);
        }
        fill(1540 + static_cast<int>((frame - 1) % 300), 300, 60, 60, 0xffffff);
        fill(1540 + static_cast<int>(frame % 300), 300, 60, 60, 0x3070e0);
        connection.synchronize();
        if (!connection.isAlive()) return;
        std::this_thread::sleep_for(
            std::chrono::duration<double>(start + static_cast<double>(frame + 1) / 60 - mediaClockNow()));
    }
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
    auto const size = fmt::format("{}x{}", width, height);
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
