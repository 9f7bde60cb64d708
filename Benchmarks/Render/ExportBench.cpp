// Export of a polished take: speed beside FFmpeg's, measured in the same run, and peak memory. Every measured piece of
// work is a process of its own, so that one's memory does not show in another's.

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Movie/JoinMovies.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroPlatform/Queues/ParallelPair.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Export/FilmPainter.h>

#include "Measured.h"
#include "ScreenScene.h"

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

constexpr double takeSeconds = 6;

// ---- the takes

void writeMovie(fs::path const& file, Size2 size, int fps, double seconds) {
    MovieWriter writer(file, {.intent = MovieIntent::live,
                              .width = static_cast<int>(size.width),
                              .height = static_cast<int>(size.height),
                              .fps = fps});
    Image image(static_cast<int>(size.width), static_cast<int>(size.height));
    for (int n = 0; n < seconds * fps; ++n) {
        drawScreenScene(image, n * 60 / fps);
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), n / static_cast<double>(fps));
    }
    writer.finish();
}

/// The look that polishing gives: gradient, rounded screen with a shadow, a zoom, a pointer that glides and clicks.
DemoProject polished(Size2 size, double seconds) {
    DemoProject project;
    project.name = "Bench";
    project.sourceSize = size;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    project.background.content = BackgroundStyle::LinearGradient{};
    project.screen = {
        .padding = 0.06, .cornerRadius = 14, .shadowRadius = 60, .shadowOpacity = 0.45, .shadowOffsetY = 18};
    auto& metadata = project.metadata.edit();
    metadata.captureSize = size;
    for (int i = 0; i < seconds * 60; ++i) {
        double const t = i / 60.0;
        metadata.cursorSamples.push_back({t, {0.5 + 0.3 * std::sin(t * 1.3), 0.5 + 0.3 * std::cos(t * 0.9)}});
    }
    metadata.rawCursorSamples = metadata.cursorSamples;
    for (double t = 1; t < seconds; t += 1.5) {
        metadata.clicks.push_back({.t = t, .position = *metadata.cursorPosition(t)});
    }
    for (double t = 0.8; t + 2.2 < seconds; t += 5) {
        project.zoomEvents.push_back(
            {.start = t, .duration = 2.2, .center = {0.3, 0.4}, .scale = 1.8, .motionBlur = 0.35});
    }
    return project;
}

void makeTake(fs::path const& folder, Size2 size, double seconds) {
    ProjectPackage const package(folder);
    package.createDirectories();
    writeMovie(package.assetURL("screen.mp4"), size, 60, seconds);
    package.save(polished(size, seconds));
}

/// A take of that many minutes: one minute at few frames a second, joined with itself.
void makeLongTake(fs::path const& folder, int minutes) {
    Size2 const size{1920, 1080};
    ProjectPackage const package(folder);
    package.createDirectories();
    auto const minute = folder / "minute.mp4";
    writeMovie(minute, size, 5, 60);
    std::vector<MoviePart> parts;
    for (int i = 0; i < minutes; ++i) parts.push_back({minute, i * 60.0});
    joinMovies(parts, package.assetURL("screen.mp4"));
    fs::remove(minute);
    package.save(polished(size, minutes * 60.0));
}

// ---- the work of the measured processes

void exportTake(fs::path const& folder, std::string const& preset, fs::path const& output) {
    ProjectPackage const package(folder);
    fs::remove(output);
    Exporter(package.load(), package, ExportPreset::withID(preset)->settings(), {.encoder = EncoderChoice::software})
        .exportMovie(output);
}

void renderFrame(fs::path const& folder, double at, fs::path const& output) {
    ProjectPackage const package(folder);
    auto const project = package.load();
    writePNG(output, filmPainter(project, package, project.exportSettings).frame(at), PNGPacking::quick);
}

// ---- FFmpeg's side

Arguments encoderArguments(ExportSettings const& settings) {
    return {"-an",
            "-c:v",
            "libx264",
            "-preset",
            "veryfast",
            "-profile:v",
            "high",
            "-pix_fmt",
            "yuv420p",
            "-threads",
            std::to_string(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L)),
            "-bf",
            "0",
            "-b:v",
            std::to_string(settings.bitrate()),
            "-g",
            std::to_string(2 * settings.fps)};
}

Arguments joined(Arguments list, Arguments const& more) {
    list.insert(list.end(), more.begin(), more.end());
    return list;
}

Arguments const ffmpeg{"ffmpeg", "-hide_banner", "-loglevel", "error", "-y"};

double coverageOfRounded(double x, double y, double halfWidth, double halfHeight, double radius, double soft) {
    double const dx = std::max(std::abs(x) - halfWidth + radius, 0.0);
    double const dy = std::max(std::abs(y) - halfHeight + radius, 0.0);
    return std::clamp(0.5 - (std::hypot(dx, dy) - radius) / soft, 0.0, 1.0);
}

void paint(Image& image, std::function<std::array<double, 4>(double, double)> const& colour) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            auto const c = colour(x + 0.5, y + 0.5);
            for (int i = 0; i < 4; ++i) {
                image.row(y)[4 * x + i] = static_cast<std::uint8_t>(std::clamp(c[i], 0.0, 1.0) * 255 + 0.5);
            }
        }
    }
}

/// What of the look never changes is drawn beforehand, decoded once and looped: background with shadow, mask, pointer.
void drawStillLayers(fs::path const& folder) {
    Image background(1920, 1080);
    paint(background, [](double x, double y) {
        double const t = x / 3840 + y / 2160;
        double const s = coverageOfRounded(x - 960, y - 558, 845, 475, 14, 150);
        double const k = 1 - 0.45 * s * s;
        return std::array{(0.31 + 0.27 * t) * k, (0.27 - 0.07 * t) * k, (0.9 + 0.02 * t) * k, 1.0};
    });
    writePNG(folder / "background.png", background.view());
    Image mask(1690, 950);
    paint(mask, [](double x, double y) {
        double const c = coverageOfRounded(x - 845, y - 475, 845, 475, 14, 2);
        return std::array{c, c, c, 1.0};
    });
    writePNG(folder / "mask.png", mask.view());
    Image pointer(24, 36);
    paint(pointer, [](double x, double y) {
        return std::array{0.0, 0.0, 0.0, x < y * 0.7 && y < 30 - x * 0.2 ? 1.0 : 0.0};
    });
    writePNG(folder / "pointer.png", pointer.view());
}

/// The same look: drawn in RGB, as chroma at half size blurs coloured text before the encoder does, and zoomed from the
/// doubled picture, as zoompan moves by whole pixels and would tremble.
Arguments filterGraph(fs::path const& folder, fs::path const& movie, ExportSettings const& settings, int frames) {
    std::string const graph =
        "[0:v]scale=3840:2160,zoompan=z='1+0.8*(clip((it-0.8)/0.6,0,1)-clip((it-2.5)/0.5,0,1))':x='iw*0.3-iw/zoom/2':"
        "y='ih*0.4-ih/zoom/2':d=1:s=1690x950:fps=60,format=gbrap[zoomed];"
        "[2:v]loop=loop=-1:size=1,fps=60,format=gray[mask];[zoomed][mask]alphamerge[screen];"
        "[1:v]loop=loop=-1:size=1,fps=60,format=gbrp[background];"
        "[background][screen]overlay=x=115:y=65:format=gbrp[framed];"
        "[3:v]loop=loop=-1:size=1,fps=60,format=gbrap[pointer];"
        "[framed][pointer]overlay=x='960+507*sin(t*1.3)':y='540+285*cos(t*0.9)':eval=frame:format=gbrp[out]";
    return joined(joined(ffmpeg, {"-i", movie, "-i", folder / "background.png", "-i", folder / "mask.png", "-i",
                                  folder / "pointer.png", "-filter_complex", graph, "-map", "[out]", "-frames:v",
                                  std::to_string(frames)}),
                  joined(encoderArguments(settings), {folder / "graph.mp4"}));
}

// ---- the figures

void print(char const* name, double value, char const* unit) {
    std::printf("%s %.3f %s\n", name, value, unit);
    std::fflush(stdout);
}

struct Bench {
    std::string self;
    fs::path folder;

    void make(char const* kind, fs::path const& take) const { runMeasured({self, kind, take}); }

    void speed() const;
    void memory2160() const;
    void firstFrame() const;
};

void Bench::speed() const {
    auto const take = folder / "take.recproj";
    auto const exported = folder / "export.mp4";
    make("--make-1080", take);
    auto const settings = ExportPreset::withID("youtube-1080")->settings();
    drawStillLayers(folder);
    auto const copying =
        joined(joined(ffmpeg, {"-i", exported}), joined(encoderArguments(settings), {folder / "copy.mp4"}));
    constexpr int graphFrames = 90;
    auto const graph = filterGraph(folder, ProjectPackage(take).assetURL("screen.mp4"), settings, graphFrames);
    constexpr double frames = takeSeconds * 60;
    std::vector<double> rates, copyRates, graphRates, overCopies, coreOverCopies, overGraphs;
    double peak = 0;
    // The three take turns, so that a machine that slows down slows all of them.
    for (int round = 0; round < 3; ++round) {
        auto const cost = runMeasured({self, "--export", take, "youtube-1080", exported});
        auto const copy = runMeasured(copying);
        rates.push_back(frames / cost.seconds);
        copyRates.push_back(frames / copy.seconds);
        graphRates.push_back(graphFrames / runMeasured(graph).seconds);
        overCopies.push_back(cost.seconds / copy.seconds);
        coreOverCopies.push_back(cost.coreSeconds / copy.coreSeconds);
        overGraphs.push_back(rates.back() / graphRates.back());
        peak = std::max(peak, cost.peakMebibytes);
    }
    print("export.fps", median(rates), "frames/s");
    print("export.reencode_fps", median(copyRates), "frames/s");
    print("export.filtergraph_fps", median(graphRates), "frames/s");
    print("export.vs_reencode", median(overCopies), "ratio");
    print("export.vs_reencode_cores", median(coreOverCopies), "ratio");
    print("export.vs_filtergraph", median(overGraphs), "ratio");
    print("export.peak_1080p", peak, "MiB");
}

void Bench::memory2160() const {
    auto const take = folder / "take4k.recproj";
    make("--make-2160", take);
    auto const cost = runMeasured({self, "--export", take, "youtube-4k", folder / "export4k.mp4"});
    print("export.peak_2160p", cost.peakMebibytes, "MiB");
}

void Bench::firstFrame() const {
    auto const minute = folder / "minute.recproj";
    auto const hour = folder / "hour.recproj";
    make("--make-minute", minute);
    make("--make-hour", hour);
    // The command line's own program where it was built, else its work done here.
    auto const program = fs::path(self).parent_path() / "tavaro";
    auto const frame = [&](fs::path const& take, char const* at) {
        auto const png = folder / "frame.png";
        fs::remove(png);
        if (fs::exists(program)) return runMeasured({program, "frame", take, "--at", at, "-o", png}).seconds;
        return runMeasured({self, "--frame", take, at, png}).seconds;
    };
    std::vector<double> shorts, longs;
    for (int round = 0; round < 5; ++round) {
        shorts.push_back(frame(minute, "33.3"));
        longs.push_back(frame(hour, "2133.3"));
    }
    print("frame.first_minute", median(shorts) * 1000, "ms");
    print("frame.first_hour", median(longs) * 1000, "ms");
    print("frame.first", median(longs) / median(shorts), "ratio");
}

int measure(std::string const& self, std::string const& only) {
    char pattern[] = "/tmp/tavaro-bench-export-XXXXXX";
    if (!mkdtemp(pattern)) throw std::runtime_error("No folder for the measurement could be made in /tmp.");
    Bench const bench{self, pattern};
    struct Cleaner {
        fs::path folder;
        ~Cleaner() {
            std::error_code ignored;
            fs::remove_all(folder, ignored);
        }
    } const cleaner{pattern};
    if (only.empty() || only == "speed") bench.speed();
    if (only.empty() || only == "memory") bench.memory2160();
    if (only.empty() || only == "first") bench.firstFrame();
    return 0;
}

int run(Arguments const& arguments) {
    auto const self = fs::canonical("/proc/self/exe").string();
    auto const mode = arguments.size() > 1 ? arguments[1] : std::string();
    if (mode.rfind("--", 0) != 0) return measure(self, mode);
    fs::path const take = arguments.at(2);
    if (mode == "--make-1080") makeTake(take, {1920, 1080}, takeSeconds);
    if (mode == "--make-2160") makeTake(take, {3840, 2160}, 1);
    if (mode == "--make-minute") makeLongTake(take, 1);
    if (mode == "--make-hour") makeLongTake(take, 60);
    if (mode == "--export") exportTake(take, arguments.at(3), arguments.at(4));
    if (mode == "--frame") renderFrame(take, std::stod(arguments.at(3)), arguments.at(4));
    return 0;
}

}

}

int main(int count, char** values) {
    tavaro::setTaskPairRunner(tavaro::runInParallel);
    try {
        return tavaro::run({values, values + count});
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
