// A whole take of a 1080p screen at 60 frames a second, a 720p camera at 30, a microphone and what the machine plays,
// made and exported by the program as users have it; then FFmpeg recording the same for a minute, twice. The screen
// flashes, the camera shows when each picture was taken, and both sounds click at moments that are known. Prints one
// line a figure: name, value, unit. `$TAKE_MINUTES` is how long the take is, 10 unless given.

#include "../../Tests/Capture/TestCameraNode.h"
#include "../../Tests/Capture/TestClicksNode.h"
#include "../../Tests/Capture/TestDisplay.h"
#include "../../Tests/Capture/TestSession.h"
#include "../Render/Measured.h"
#include "DisplayWatch.h"
#include "FilmedSigns.h"
#include "MovingScreen.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

using namespace tavaro;

namespace {

constexpr int cameraWidth = 1280;
constexpr int cameraHeight = 720;
constexpr char const* output = "out";

/// In a process of its own.
int paint(char const* display) {
    paintForever(display, [](double moment) {
        fmt::print("{:.6f}\n", moment);
        std::fflush(stdout);
    });
    return 0;
}

/// In a process of its own.
int watch(char const* display) {
    watchForever(display);
    return 0;
}

/// Everything that is recorded.
class Desk {
public:
    Desk()
        : session_(TestSession::Sound::on)
        , display_(movingScreenWidth, movingScreenHeight)
        , shown_("DISPLAY", display_.name()) {
        order("load-module module-null-sink sink_name=" + std::string(output));
        camera_.emplace(TestCameraNode::Options{.width = cameraWidth, .height = cameraHeight});
        heard_.emplace(TestClicksNode::Options{.click = {0.9f, 0}});
        played_.emplace(TestClicksNode::Options{.output = output, .click = {0, 0.9f}});
        painter_.emplace(std::vector<std::string>{"/proc/self/exe", "--paint", display_.name()}, flashes());
        watch_.emplace(std::vector<std::string>{"/proc/self/exe", "--watch", display_.name()}, file("stalls"));
        if (!eventually([this] { return camera_ && std::ifstream(flashes()).peek() != EOF; }))
            throw std::runtime_error("Nothing is painted.");
    }

    std::string display() const { return display_.name(); }
    std::filesystem::path file(std::string const& name) const { return session_.folder() / name; }
    std::vector<double> flashMoments() const {
        std::vector<double> result;
        std::ifstream lines(flashes());
        for (double moment; lines >> moment;) result.push_back(moment);
        return result;
    }
    std::vector<double> heardMoments() const { return heard_->moments(); }
    std::vector<double> playedMoments() const { return played_->moments(); }
    std::vector<double> cameraMoments() const { return camera_->moments(); }
    /// When what clicks did not get the processor in time, so that what it says then is late, whoever records it.
    std::vector<double> heardLate() const { return heard_->lateTurns(); }
    std::vector<double> playedLate() const { return played_->lateTurns(); }
    std::vector<DisplayStall> stalls() const { return stallsIn(file("stalls")); }

private:
    std::filesystem::path flashes() const { return session_.folder() / "flashes"; }
    void order(std::string const& words) const {
        auto const server = "unix:" + (session_.folder() / "pulse" / "native").string();
        if (std::system(("pactl -s " + server + " " + words + " >/dev/null 2>&1").c_str()) != 0)
            throw std::runtime_error("pactl " + words);
    }

    TestSession session_;
    TestDisplay display_;
    ScopedVariable shown_;
    std::optional<TestCameraNode> camera_;
    std::optional<TestClicksNode> heard_;
    std::optional<TestClicksNode> played_;
    std::optional<TestProcess> painter_;
    std::optional<TestProcess> watch_;
};

/// The camera's pictures for a program that reads them from a pipe.
class PipedCamera {
public:
    explicit PipedCamera(std::filesystem::path pipe) : pipe_(std::move(pipe)) {
        mkfifo(pipe_.c_str(), 0600);
        thread_ = std::thread([this] { film(); });
    }
    ~PipedCamera() {
        isEnding_ = true;
        int const end = open(pipe_.c_str(), O_RDONLY | O_NONBLOCK); // one that nobody opened is waited for
        thread_.join();
        close(end);
    }

private:
    void film() {
        std::signal(SIGPIPE, SIG_IGN);
        int const end = open(pipe_.c_str(), O_WRONLY | O_CLOEXEC);
        fcntl(end, F_SETPIPE_SZ, 1 << 20);
        std::vector<std::uint8_t> picture(std::size_t{2} * cameraWidth * cameraHeight);
        double next = mediaClockNow();
        while (!isEnding_) {
            paintTimecode(picture, cameraWidth, std::llround(mediaClockNow() * 1e6), 100);
            std::size_t written = 0;
            while (written < picture.size()) {
                auto const count = write(end, picture.data() + written, picture.size() - written);
                if (count <= 0) return void(close(end));
                written += static_cast<std::size_t>(count);
            }
            next += 1.0 / 30;
            std::this_thread::sleep_for(std::chrono::duration<double>(next - mediaClockNow()));
        }
        close(end);
    }

    std::filesystem::path const pipe_;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

std::int64_t frameCount(std::filesystem::path const& movie) { return MovieReader(movie).info().frameCount.value_or(0); }

/// How FFmpeg's encoder is told how good the pictures are to be: the way of its users, or that of a take.
struct Quality {
    char const* option;
    std::string suffix; // of the figures
};
Quality const usualQuality{"-crf", ""};
Quality const takesQuality{"-qp", "_same_quantizer"};

/// Cores that were busy with it.
double recordWithFFmpeg(Desk const& desk, double seconds, Quality const& quality) {
    PipedCamera const camera(desk.file("camera.yuv"));
    auto const length = fmt::format("{}", seconds);
    std::vector<std::string> arguments{"ffmpeg", "-y", "-loglevel", "error"};
    auto const add = [&](std::vector<std::string> const& words) {
        arguments.insert(arguments.end(), words.begin(), words.end());
    };
    add({"-f", "x11grab", "-draw_mouse", "0", "-framerate", "60", "-video_size",
         fmt::format("{}x{}", movingScreenWidth, movingScreenHeight), "-t", length, "-i", desk.display()});
    add({"-f", "rawvideo", "-pixel_format", "yuyv422", "-framerate", "30", "-video_size",
         fmt::format("{}x{}", cameraWidth, cameraHeight), "-t", length, "-i", desk.file("camera.yuv")});
    add({"-f", "pulse", "-t", length, "-i", TestClicksNode::microphone});
    add({"-f", "pulse", "-t", length, "-i", std::string(output) + ".monitor"});
    for (auto const& [stream, rate] : {std::pair("0", "60"), std::pair("1", "30")})
        add({"-map",
             stream,
             "-c:v",
             "libx264",
             "-preset",
             "ultrafast",
             "-tune",
             "zerolatency",
             quality.option,
             "18",
             "-profile:v",
             "high",
             "-threads",
             "1",
             "-g",
             rate,
             "-pix_fmt",
             "yuv420p",
             "-movflags",
             "+empty_moov+default_base_moof",
             "-frag_duration",
             "500000",
             desk.file(fmt::format("{}.mov", stream))});
    for (auto const* const stream : {"2", "3"})
        add({"-map", stream, "-c:a", "pcm_s16le", desk.file(fmt::format("{}.wav", stream))});
    double const cores = runMeasured(arguments).coreSeconds / seconds;
    fmt::print("take.screen.frames_lost_ffmpeg{} {:.0f} frames of {:.0f}\n", quality.suffix,
               seconds * 60 - static_cast<double>(frameCount(desk.file("0.mov"))), seconds * 60);
    return cores;
}

double medianBetween(std::vector<Lateness> const& all, double from, double to) {
    std::vector<double> within;
    for (auto const& one : all)
        if (one.at >= from && one.at < to) within.push_back(one.seconds);
    if (within.empty()) throw std::runtime_error("There is nothing to see or hear in a part of the film.");
    return median(std::move(within));
}

/// Of the moments within the film, those that are not in it. Its first and last half second are not looked at: devices
/// begin and end when they like.
std::vector<double> missing(std::vector<double> made, std::vector<double> filmed, double begin, double length) {
    constexpr double edge = 0.5, furthest = 0.015;
    std::ranges::sort(filmed);
    std::erase_if(made, [&](double moment) {
        double const at = moment - begin;
        if (at < edge || at > length - edge) return true;
        auto const after = std::ranges::lower_bound(filmed, at - furthest);
        return after != filmed.end() && *after <= at + furthest;
    });
    return made;
}

/// How many clicks nobody heard when they were due, and of how many of those that is said: what said them was late.
void tellClicks(char const* name, std::vector<double> const& lost, std::vector<double> const& late, std::size_t count) {
    constexpr double cycles = 0.1; // as long as a graph takes to be in step again
    auto const isLate = [&](double moment) {
        return std::ranges::any_of(late, [&](double turn) { return std::abs(turn - moment) < cycles; });
    };
    fmt::print("take.{}.clicks_lost {} of {}, {} of them said late\n", name, lost.size(), count,
               std::ranges::count_if(lost, isLate));
}

/// Where the take has no frame, and whether the display could have given one there.
void tellLostFrames(Desk const& desk, std::filesystem::path const& recording, double begin) {
    constexpr double frame = 1.0 / 60;
    auto const lost = framesMissingIn(recording, 60);
    auto const stalls = desk.stalls();
    auto const isStalled = [&](double at) {
        return std::ranges::any_of(stalls, [&](DisplayStall const& stall) {
            return begin + at > stall.from - 2 * frame && begin + at < stall.to + 2 * frame;
        });
    };
    for (double const at : lost)
        fmt::print("take.screen.frame_lost_at {:.3f} s{}\n", at, isStalled(at) ? ", the display stood still" : "");
    fmt::print("take.screen.frames_lost_to_stalls {} of {}\n", std::ranges::count_if(lost, isStalled), lost.size());
    auto const isMachines = [](DisplayStall const& stall) { return stall.woken - stall.from > shortestStall / 2; };
    fmt::print("take.screen.stalls {}, {} of them of the whole machine\n", stalls.size(),
               std::ranges::count_if(stalls, isMachines));
}

/// How much later the screen, and the camera, are in the film than the sound of a moment.
void tellSteps(std::string const& name, std::vector<Lateness> const& shown, std::vector<Lateness> const& heard,
               double length) {
    double const part = std::min(60.0, length / 3);
    for (auto const& [where, from] :
         {std::pair("start", 0.0), std::pair("middle", (length - part) / 2), std::pair("end", length - part)}) {
        double const apart = medianBetween(shown, from, from + part) - medianBetween(heard, from, from + part);
        fmt::print("take.{}.{} {:.2f} ms\n", name, where, apart * 1000);
    }
}

void tellFilm(Desk const& desk, std::filesystem::path const& package, std::filesystem::path const& film) {
    auto const project = ProjectPackage(package).load();
    auto const flashed = flashesIn(film);
    double const begin = beginOf(flashed, desk.flashMoments());
    double const length = project.assetDurations.at(project.timeline.clips.at(0).asset);
    auto const shown = latenesses(flashed, desk.flashMoments(), begin);
    auto const left = clicksIn(film, Side::left), right = clicksIn(film, Side::right);
    auto const heard = latenesses(left, desk.heardMoments(), begin);
    double const heardBegin = begin - medianBetween(heard, 0, length);
    auto const played = latenesses(right, desk.playedMoments(), begin);
    tellSteps("flash_after_microphone", shown, heard, length);
    tellSteps("flash_after_system_audio", shown, played, length);
    auto const codes = codesIn(package / "assets" / project.cameraAsset.value());
    std::vector<Lateness> filmed;
    std::vector<double> taken;
    for (auto const& code : codes) {
        double const at = code.at - project.cameraOffset;
        filmed.push_back({at, at + begin - code.moment});
        taken.push_back(code.moment - begin);
    }
    tellSteps("camera_after_microphone", filmed, heard, length);
    auto const& health = project.metadata->health;
    fmt::print("take.screen.frames_lost {} frames of {}\n", health.droppedFrames + health.writerRejectedFrames,
               health.framesWritten + health.droppedFrames + health.writerRejectedFrames);
    tellLostFrames(desk, package / "assets" / project.timeline.clips.at(0).asset, begin);
    fmt::print("take.camera.frames_lost {} frames of {}\n", missing(desk.cameraMoments(), taken, begin, length).size(),
               codes.size());
    fmt::print("take.interruptions {}\n", health.interruptions);
    tellClicks("microphone", missing(desk.heardMoments(), left, heardBegin, length), desk.heardLate(), left.size());
    tellClicks("system_audio", missing(desk.playedMoments(), right, heardBegin, length), desk.playedLate(),
               right.size());
}

double load() {
    double result = 0;
    getloadavg(&result, 1);
    return result;
}

/// That other machines took of this one's processors since it began.
double stolenSeconds() {
    std::ifstream stream("/proc/stat");
    std::string name;
    double ticks = 0;
    stream >> name;
    for (int i = 0; i < 8; ++i) stream >> ticks; // user, nice, system, idle, iowait, irq, softirq, steal
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

void run(double seconds) {
    Desk const desk;
    auto const project = desk.file("take.recproj"), film = desk.file("film.mp4");
    auto const lateTurns = [&] { return desk.heardLate().size() + desk.playedLate().size(); };
    auto const lateBefore = lateTurns();
    double const stolenBefore = stolenSeconds();
    auto const recorded = runMeasured({TAVARO_PROGRAM, "record", "--camera", "--microphone", "--system-audio",
                                       "--no-polish", "--seconds", fmt::format("{}", seconds), "-o", project});
    fmt::print("take.seconds {} s\n", seconds);
    fmt::print("take.load {:.1f}\n", load());
    auto const late = lateTurns() - lateBefore;
    fmt::print("take.stolen {:.2f} %\n", (stolenSeconds() - stolenBefore) / seconds * 100);
    fmt::print("take.clicks_were_in_time {} ({} late turns)\n", late == 0 ? "yes" : "no", late);
    std::fflush(stdout);
    double const ours = recorded.coreSeconds / seconds;
    fmt::print("take.cpu {:.1f} %\n", ours * 100);
    for (auto const& quality : {usualQuality, takesQuality}) {
        double const theirs = recordWithFFmpeg(desk, std::min(seconds, 60.0), quality);
        fmt::print("take.cpu_ffmpeg{} {:.1f} %\n", quality.suffix, theirs * 100);
        fmt::print("take.cpu_ratio{} {:.3f} x\n", quality.suffix, ours / theirs);
    }
    fmt::print("take.memory {:.0f} MiB\n", recorded.peakMebibytes);
    std::fflush(stdout);
    auto const exported =
        runMeasured({TAVARO_PROGRAM, "export", project, "--size", "640x360", "--fps", "60", "-o", film});
    fmt::print("take.export {:.1f} s\n", exported.seconds);
    tellFilm(desk, project, film);
}

}

int main(int count, char** arguments) {
    if (count == 3 && std::string_view(arguments[1]) == "--paint") return paint(arguments[2]);
    if (count == 3 && std::string_view(arguments[1]) == "--watch") return watch(arguments[2]);
    char const* const minutes = std::getenv("TAKE_MINUTES");
    try {
        run((minutes ? std::stod(minutes) : 10) * 60);
        return 0;
    } catch (std::exception const& failure) {
        fmt::print(stderr, "bench-take: {}\n", failure.what());
        return 1;
    }
}
