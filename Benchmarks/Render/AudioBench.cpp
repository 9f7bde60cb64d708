// The sound of an export: how many times faster than it plays an hour is enhanced and mixed, from a cold cache, how
// many times a film at another speed is, and the memory that takes. `bench-audio [MINUTES]`; the take is a shorter one
// by default, since every step costs the same for each second of it.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <vector>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroRender/Audio/Private/AudioEnhancer.h>
#include <TavaroRender/Export/Private/AudioPass.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

/// Of all cores together; unlike the time on the clock it does not depend on what else the machine does.
double coreSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto const seconds = [](timeval const& time) { return static_cast<double>(time.tv_sec) + time.tv_usec * 1e-6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// A folder that goes with this.
struct Folder {
    fs::path path = fs::temp_directory_path() / ("tavaro-bench-audio-" + std::to_string(getpid()));
    Folder() { fs::create_directories(path); }
    ~Folder() { fs::remove_all(path); }
};

/// Syllables over a hiss; both sides differ by `width`.
void writeVoice(fs::path const& file, double seconds, float width) {
    AudioFileWriter writer(file, AudioFileFormat::whole16);
    std::uint32_t random = 1;
    std::vector<StereoSample> block(audioRate);
    for (int second = 0; second < seconds; ++second) {
        for (int i = 0; i < audioRate; ++i) {
            random ^= random << 13;
            random ^= random >> 17;
            random ^= random << 5;
            double const t = second + static_cast<double>(i) / audioRate;
            double const syllable = std::pow(std::sin(t * 13), 2) * (std::fmod(t, 5) < 4);
            double const voice =
                syllable * (0.2 * std::sin(t * 900) + 0.1 * std::sin(t * 2700) + 0.05 * std::sin(t * 11000));
            auto const value = static_cast<float>(voice + 0.004 * (random / 2147483648.0 - 1));
            block[static_cast<std::size_t>(i)] = {value, value * (1 - width)};
        }
        writer.append(block);
    }
    writer.finish();
}

DemoProject take(double seconds) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    std::vector<AudioClip> pieces; // a pause taken out every ten seconds
    for (double at = 0; at < seconds - 10; at += 10)
        pieces.push_back({.asset = "voice.caf", .start = at * 0.95, .sourceStart = at, .duration = 9.5});
    project.audioTracks = {{.role = AudioRole::microphone,
                            .clips = pieces,
                            .noiseReduction = true,
                            .voiceClarity = true,
                            .normalize = true},
                           {.role = AudioRole::system, .clips = {{.asset = "system.caf", .duration = seconds}}}};
    project.cursor.clickSound = true;
    for (double t = 0.5; t < seconds; t += 3) project.metadata.edit().clicks.push_back({.t = t});
    return project;
}

double mixedSeconds(MixRenderer& mix) {
    auto const start = Clock::now();
    std::vector<StereoSample> block(4096);
    for (std::int64_t at = 0; at < mix.plan().length; at += std::ssize(block)) mix.render(at, block);
    return since(start);
}

void measure(char const* name, double seconds, float width) {
    Folder const folder;
    ProjectPackage const package(folder.path / "Take.recproj");
    package.createDirectories();
    writeVoice(package.assetURL("voice.caf"), seconds, width);
    writeVoice(package.assetURL("system.caf"), seconds, 0.3f);
    auto const project = take(seconds);
    AudioEnhancer const enhancer(folder.path / "cache");
    std::atomic<bool> const isCancelled = false;
    auto const start = Clock::now();
    auto const coresBefore = coreSeconds();
    auto mix = prepareMix(project, package, enhancer, isCancelled, [](double) {});
    auto const enhancing = since(start);
    auto const mixing = mixedSeconds(*mix);
    auto const cores = coreSeconds() - coresBefore;
    auto const print = [&](char const* figure, double value) {
        std::printf("audio.mix.%s%s %.1f × real time\n", name, figure, value);
    };
    print(".enhancing", seconds / enhancing);
    print(".mixing", seconds / mixing);
    print("", seconds / (enhancing + mixing)); // the bar is 40
    std::printf("audio.mix.%s.cores %.1f core seconds an hour\n", name, cores / seconds * 3600);
    std::fflush(stdout);
}

/// Film seconds made in a second of a voice at other speeds.
void measureSpeeds(double seconds) {
    Folder const folder;
    ProjectPackage const package(folder.path / "Take.recproj");
    package.createDirectories();
    writeVoice(package.assetURL("voice.caf"), seconds, 0.3f);
    for (double const speed : {0.25, 0.5, 2.0, 4.0}) {
        DemoProject project;
        project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds / speed, .speed = speed}};
        project.audioTracks = {{.clips = {{.asset = "voice.caf", .duration = seconds / speed, .speed = speed}}}};
        AudioEnhancer const enhancer(folder.path / "cache");
        std::atomic<bool> const isCancelled = false;
        auto mix = prepareMix(project, package, enhancer, isCancelled, [](double) {});
        std::printf("audio.mix.speed%g %.1f × real time\n", speed, seconds / speed / mixedSeconds(*mix));
    }
    std::fflush(stdout);
}

}

}

int main(int count, char** values) {
    try {
        double const minutes = count > 1 ? std::atof(values[1]) : 10;
        tavaro::measure("mono", minutes * 60, 0);
        tavaro::measure("stereo", minutes * 60, 0.3f);
        tavaro::measureSpeeds(std::min(minutes, 2.0) * 60);
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        std::printf("audio.memory %.0f MiB\n", static_cast<double>(usage.ru_maxrss) / 1024);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
