#include <Benchmarks/Studio/EventSleep.h>
#include <Benchmarks/Studio/LongFilm.h>
#include <Benchmarks/Studio/PreviewBench.h>

#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Studio/Playback/PulseOutput.h>
#include <Tavaro/Studio/Preview/PreviewItem.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <QQuickWindow>
#include <QSGRendererInterface>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

#include "../../Tests/Capture/HeardClicks.h"
#include "../../Tests/Capture/TestSoundServer.h"
#include "../../Tests/Core/Package/TemporaryFolder.h"
#include "../Render/ScreenScene.h"

namespace tavaro {

namespace {

constexpr Size2 size{1920, 1080};
constexpr double takeSeconds = 12;
constexpr double patience = 20; // seconds, for anything

void print(std::string const& name, double value, char const* unit) {
    std::printf("preview.%s %.3f %s\n", name.c_str(), value, unit);
    std::fflush(stdout);
}

void writeMovie(std::filesystem::path const& file) {
    MovieWriter writer(
        file,
        {.intent = MovieIntent::live, .width = 1920, .height = 1080, .fps = 60, .keyFrameInterval = 60}); // a take
    Image image(1920, 1080);
    for (int n = 0; n < takeSeconds * 60; ++n) {
        drawScreenScene(image, n);
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), n / 60.0);
    }
    writer.finish();
}

void writeTone(std::filesystem::path const& file) {
    std::vector<StereoSample> tone(static_cast<std::size_t>(takeSeconds * audioRate));
    for (std::size_t i = 0; i < tone.size(); ++i) {
        auto const value = 0.5 * std::sin(2 * std::numbers::pi * 440 * static_cast<double>(i) / audioRate);
        tone[i] = {static_cast<float>(value), static_cast<float>(value)};
    }
    AudioFileWriter writer(file, AudioFileFormat::whole16);
    writer.append(tone);
    writer.finish();
}

/// The look that polishing gives: gradient, rounded screen with a shadow, zooms, a pointer that glides and clicks.
DemoProject polished() {
    DemoProject project;
    project.sourceSize = project.canvas = size;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = takeSeconds}};
    project.background.content = BackgroundStyle::LinearGradient{};
    project.screen = {
        .padding = 0.06, .cornerRadius = 14, .shadowRadius = 60, .shadowOpacity = 0.45, .shadowOffsetY = 18};
    auto& metadata = project.metadata.edit();
    metadata.captureSize = size;
    for (int i = 0; i < takeSeconds * 60; ++i) {
        double const t = i / 60.0;
        metadata.cursorSamples.push_back({t, {0.5 + 0.3 * std::sin(t * 1.3), 0.5 + 0.3 * std::cos(t * 0.9)}});
    }
    for (double t = 1; t < takeSeconds; t += 1.5)
        metadata.clicks.push_back({.t = t, .position = *metadata.cursorPosition(t)});
    for (double t = 0.8; t + 2.2 < takeSeconds; t += 5)
        project.zoomEvents.push_back({.start = t, .duration = 2.2, .center = {0.3, 0.4}, .scale = 1.8});
    project.audioTracks = {{.role = AudioRole::music, .clips = {{.asset = "tone.caf", .duration = takeSeconds}}}};
    return project;
}

/// A window with nothing but the preview, drawn by Qt's software renderer on the thread that measures.
class Stage {
public:
    Stage(OpenProject& project, std::string const& server, QSize room)
        : preview_(project, {std::make_unique<PulseOutput>(server), mediaClockNow})
        , item_(window_.contentItem()) {
        window_.resize(room);
        item_.setSize(room);
        item_.setPreview(&preview_);
        QObject::connect(&window_, &QQuickWindow::frameSwapped, [this] { noteSwap(); });
        window_.show();
        until([this] { return swaps_ > 0 && preview_.picture().canvas; });
    }

    FilmPreview& preview() { return preview_; }
    FilmPlayback& playback() { return *preview_.playback(); }
    int swaps() const { return swaps_; }
    int pictures() const { return pictures_; }
    std::vector<double> const& lags() const { return lags_; }

    /// Seconds that it takes until then; at most `patience`. The thread sleeps meanwhile, as a program's does: what
    /// draws and decodes has all cores.
    double until(std::function<bool()> const& isSo, double atMost = patience) {
        double const start = mediaClockNow();
        while (!isSo() && mediaClockNow() - start < atMost) sleepUntilEvent();
        return mediaClockNow() - start;
    }
    void pass(double seconds) {
        until([] { return false; }, seconds);
    }
    /// Until a picture for which that is so is on the window.
    double untilShown(std::function<bool(PreviewPicture const&)> const& isIt) {
        return until([&] { return shown_ && isIt(*shown_); });
    }

private:
    void noteSwap() {
        ++swaps_;
        auto const& picture = preview_.picture();
        if (shown_ && picture.canvas != shown_->canvas) {
            ++pictures_;
            lags_.push_back(playback().position() - picture.at);
        }
        shown_ = picture;
    }

    FilmPreview preview_;
    QQuickWindow window_;
    PreviewItem item_;
    int swaps_ = 0;
    int pictures_ = 0;
    std::vector<double> lags_; // seconds that pictures were behind the sound when they were on the window
    std::optional<PreviewPicture> shown_;
};

void measureSeeks(Stage& stage, std::string const& name) {
    std::vector<double> took;
    for (int i = 0; i < 60; ++i) {
        double const at = std::fmod(0.37 + i * 4.271, takeSeconds - 0.1);
        stage.playback().seek(at);
        took.push_back(1000 * stage.untilShown([&](PreviewPicture const& picture) { return picture.at == at; }));
        stage.pass(0.02);
    }
    print(name + ".seek_p50", percentile(took, 0.5), "ms");
    print(name + ".seek_p95", percentile(took, 0.95), "ms");
}

/// Pixels of the window's picture that are not those of `tavaro frame` at its size.
void measureGrabs(Stage& stage, OpenProject const& project, std::string const& name) {
    std::size_t different = 0;
    for (double const at : {0.5, 2.0, 3.31, 6.0, 7.77, 11.0}) {
        stage.playback().seek(at);
        stage.untilShown([&](PreviewPicture const& picture) { return picture.at == at; });
        auto const grab = stage.preview().grab();
        auto painter = framePainter(project.document(), project.package(), {grab.width(), grab.height()});
        auto const frame = filmFrame(painter, at);
        for (int y = 0; y < grab.height(); ++y) {
            auto const *seen = grab.constScanLine(y), *meant = frame.row(y);
            for (int x = 0; x < 4 * grab.width(); ++x) different += seen[x] != meant[x];
        }
    }
    print(name + ".grab_differs_from_frame", static_cast<double>(different), "values");
}

/// Back by frames, as a key that is held does.
void measureStepsBack(Stage& stage, std::string const& name) {
    std::vector<double> took;
    double at = 9.5;
    for (int i = 0; i < 40; ++i) {
        at -= 1.0 / 60;
        stage.playback().seek(at);
        double const exact = at;
        took.push_back(1000 * stage.untilShown([&](PreviewPicture const& picture) { return picture.at == exact; }));
    }
    print(name + ".step_back_p50", percentile(took, 0.5), "ms");
}

void measurePlaying(Stage& stage, std::string const& name, HeardClicks const* heard) {
    stage.playback().seek(0);
    stage.playback().play();
    print(name + ".play_to_heard", 1000 * stage.until([&] { return stage.playback().clock().isRunning(); }), "ms");
    stage.pass(1);
    int const before = stage.pictures();
    int const gaps = heard ? heard->gaps() : 0;
    double const loud = heard ? heard->loudSeconds() : 0;
    auto const lagsBefore = static_cast<std::ptrdiff_t>(stage.lags().size());
    double const start = mediaClockNow();
    stage.pass(8);
    double const seconds = mediaClockNow() - start;
    print(name + ".playing", (stage.pictures() - before) / seconds, "pictures/s");
    std::vector<double> const lags(stage.lags().begin() + lagsBefore, stage.lags().end());
    print(name + ".picture_behind_sound", 1000 * percentile(lags, 0.5), "ms");
    print(name + ".picture_behind_sound_p95", 1000 * percentile(lags, 0.95), "ms");
    auto const* const canvas = stage.preview().picture().canvas.get();
    print(name + ".playing_width", canvas ? canvas->width() : 0, "pixels");
    if (heard) {
        print(name + ".sound_gaps", heard->gaps() - gaps, "gaps");
        print(name + ".sound_heard", (heard->loudSeconds() - loud) / seconds, "of the time");
    }
    stage.playback().pause();
    stage.pass(0.5);
}

void measureRest(Stage& stage, std::string const& name) {
    stage.pass(0.5);
    int const swaps = stage.swaps();
    auto const drawn = stage.preview().player().drawn();
    stage.pass(3);
    print(name + ".draws_at_rest", static_cast<double>(stage.preview().player().drawn() - drawn), "draws");
    print(name + ".swaps_at_rest", stage.swaps() - swaps, "frames");
}

/// Seconds that the composition takes for the frame of a changed revision, alone.
double drawingSeconds(OpenProject const& project, Size2 size, double at) {
    auto film = project.document();
    auto painter = framePainter(film, project.package(), size);
    (void)painter.frame(at);
    std::vector<double> took;
    for (int i = 0; i < 20; ++i) {
        film.screen.cornerRadius = 30 + i % 7;
        painter.show(film);
        double const start = mediaClockNow();
        (void)painter.frame(at);
        took.push_back(mediaClockNow() - start);
    }
    return percentile(took, 0.5);
}

void measureEdits(Stage& stage, OpenProject& project, std::string const& name) {
    std::vector<double> took;
    for (int i = 0; i < 40; ++i) {
        auto const next = stage.preview().picture().revision + 1;
        project.edit("Radius", [&](DemoProject& edited) { edited.screen.cornerRadius = 15 + i % 7; });
        took.push_back(1000 * stage.untilShown([&](PreviewPicture const& shown) { return shown.revision >= next; }));
    }
    auto const& shown = stage.preview().picture();
    double const drawing = 1000 * drawingSeconds(project, {shown.canvas->width(), shown.canvas->height()}, shown.at);
    print(name + ".edit_p50", percentile(took, 0.5), "ms");
    print(name + ".edit_p95", percentile(took, 0.95), "ms");
    print(name + ".drawing_p50", drawing, "ms");
    print(name + ".edit_beyond_drawing_p95", percentile(took, 0.95) - drawing, "ms");
}

}

void benchPreview() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    TemporaryFolder const folder;
    ProjectPackage const package(folder / "Bench.recproj");
    package.createDirectories();
    writeMovie(package.assetURL("screen.mp4"));
    writeTone(package.assetURL("tone.caf"));
    package.save(polished());
    std::optional<TestSoundServer> server;
    if (TestSoundServer::isInstalled()) server.emplace();
    std::string const address = server ? server->address() : "unix:/nonexistent";
    std::optional<HeardClicks> heard;
    if (server) heard.emplace(address);
    for (auto const& [name, room] : {std::pair{"720p", QSize(1280, 720)}, {"1080p", QSize(1920, 1080)}}) {
        OpenProject project(readProject(package.url()));
        Stage stage(project, address, room);
        measureSeeks(stage, name);
        measureStepsBack(stage, name);
        measureGrabs(stage, project, name);
        measureEdits(stage, project, name);
        measurePlaying(stage, name, heard ? &*heard : nullptr);
        measureRest(stage, name);
    }
}

}
