#include "../Playback/FakeOutput.h"

#include "../../Capture/HeardClicks.h"
#include "../../Capture/TestDisplay.h"
#include "../../Capture/TestSoundServer.h"
#include "../../Media/Audio/TestSounds.h"
#include "../../Render/Export/TestTake.h"

#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Studio/Playback/PulseOutput.h>
#include <Tavaro/Studio/Preview/PreviewItem.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <QCoreApplication>
#include <QQuickWindow>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

bool comesTrue(std::function<bool()> const& isSo) {
    return eventually([&] {
        QCoreApplication::processEvents();
        return isSo();
    });
}

ImageView viewOf(QImage const& image) {
    return {image.constBits(), image.width(), image.height(), static_cast<std::ptrdiff_t>(image.bytesPerLine())};
}

double median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

/// A film of three seconds in a preview, played on a device of the test's.
class FilmPreviewTest : public testing::Test {
protected:
    void open(std::unique_ptr<SoundOutput> output = nullptr, FilmClock::Time time = {}) {
        take.package.save(take.project);
        project.emplace(readProject(take.package.url()));
        if (!output) output = std::make_unique<FakeOutput>(device);
        preview.emplace(*project, FilmPlayback::Means{std::move(output), std::move(time)});
    }
    bool shows(double at, std::int64_t revision = 1) {
        return comesTrue([&] {
            auto const& picture = preview->picture();
            return picture.canvas && picture.at == at && picture.revision == revision;
        });
    }
    /// As `tavaro frame` draws it.
    Image frame(double at) {
        auto painter = framePainter(project->document(), take.package, project->document().canvas);
        return filmFrame(painter, at);
    }

    TestTake take{"preview"};
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    std::optional<OpenProject> project;
    std::optional<FilmPreview> preview;
};

}

TEST_F(FilmPreviewTest, whatIsSeenIsWhatIsExportedAndNothingIsDrawnAtRest) {
    take.project.intro = TitleCard{.text = "Tour", .duration = 1};
    open();
    preview->fit(take.project.canvas);
    for (double const at : {0.5, 1.25, 3.9, 4.0, 2.0}) {
        preview->playback()->seek(at);
        ASSERT_TRUE(shows(at));
        EXPECT_TRUE(samePixels(viewOf(preview->grab()), frame(at).view())) << at;
    }
    EXPECT_EQ(preview->problems(), QStringList());
    auto const drawn = preview->player().drawn();
    preview->playback()->seek(2);
    preview->fit(take.project.canvas);
    project->edit("Change", [](DemoProject& edited) { edited.background.content = BackgroundStyle::Solid{}; });
    ASSERT_TRUE(shows(2, 2));
    EXPECT_TRUE(samePixels(viewOf(preview->grab()), frame(2).view()));
    EXPECT_EQ(preview->player().drawn(), drawn + 1) << "what is wanted already is not drawn again";
}

TEST_F(FilmPreviewTest, anEditOfItemsIsSeenAsOneOfTheDocumentIs) {
    for (int i = 0; i < 100; ++i) take.project.overlays.push_back({.start = 9, .duration = 0.01});
    take.project.zoomEvents = {{.start = 0.5, .duration = 2, .scale = 1.5}};
    open();
    preview->fit(take.project.canvas);
    preview->playback()->seek(1.5);
    ASSERT_TRUE(shows(1.5));
    std::int64_t revision = 1;
    auto const zoom = [&](double scale) {
        auto zoom = project->document().zoomEvents[0];
        zoom.scale = scale;
        project->editItems("Zoom", {{0, zoom}});
    };
    for (double const scale : {2.0, 3.0, 1.2}) {
        zoom(scale);
        ASSERT_TRUE(shows(1.5, ++revision));
        ASSERT_TRUE(samePixels(viewOf(preview->grab()), frame(1.5).view())) << scale;
    }
    project->edit("Change", [](DemoProject& edited) {
        edited.background.content = BackgroundStyle::Solid{};
        edited.overlays.erase(edited.overlays.begin());
    });
    zoom(2.5);
    ASSERT_TRUE(shows(1.5, revision += 2)) << "on what was edited meanwhile";
    ASSERT_TRUE(samePixels(viewOf(preview->grab()), frame(1.5).view()));
    for (std::size_t i = 0; i < 99; ++i) { // more than are kept one by one
        auto overlay = project->document().overlays[i];
        overlay.start = 1;
        overlay.duration = 2;
        project->editItems("Move", {{i, overlay}});
    }
    ASSERT_TRUE(shows(1.5, revision += 99));
    ASSERT_TRUE(samePixels(viewOf(preview->grab()), frame(1.5).view()));
}

TEST_F(FilmPreviewTest, theNewestMomentWinsOverThoseThatNobodyWantsAnyMore) {
    open();
    preview->fit(take.project.canvas);
    for (int i = 0; i <= 200; ++i) preview->scrub(i / 100.0);
    ASSERT_TRUE(shows(2));
    EXPECT_LT(preview->player().drawn(), 150);
    EXPECT_TRUE(comesTrue([&] { return samePixels(viewOf(preview->grab()), frame(2).view()); }))
        << "it rests as fine as can be";
}

TEST_F(FilmPreviewTest, whatCannotBeDrawnIsASentenceUntilItCan) {
    auto const screen = take.package.assetURL("screen.mp4");
    std::filesystem::rename(screen, take.folder / "away.mp4");
    open();
    preview->fit(take.project.canvas);
    EXPECT_TRUE(
        comesTrue([&] { return preview->problems() == QStringList{"Missing asset 'screen.mp4' in the project."}; }));
    EXPECT_TRUE(preview->grab().isNull());
    std::filesystem::rename(take.folder / "away.mp4", screen);
    preview->playback()->seek(1);
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(preview->problems(), QStringList());

    project->edit("Look", [](DemoProject& edited) {
        edited.background.content = BackgroundStyle::ImageFile{.assetName = "gone.png"};
    });
    ASSERT_TRUE(shows(1, 2)) << "an effect that fails is left out";
    EXPECT_EQ(preview->problems().size(), 1);
    project->edit("Clear", [](DemoProject& edited) { edited.timeline.clips.clear(); });
    EXPECT_TRUE(comesTrue([&] { return preview->grab().isNull() && preview->problems().size() == 1; }))
        << "an empty film shows nothing, and says so";
}

TEST_F(FilmPreviewTest, aFilmOfOneFrameAndOneThatIsNotSeenPlayToTheirEnd) {
    take.project.timeline.clips[0].duration = 1.0 / 60;
    open();
    preview->playback()->play();
    EXPECT_TRUE(comesTrue([&] { return !preview->playback()->isPlaying(); }));
    EXPECT_EQ(preview->player().drawn(), 0) << "nobody looks";
    preview->fit(take.project.canvas);
    ASSERT_TRUE(shows(1.0 / 60));
    EXPECT_TRUE(samePixels(viewOf(preview->grab()), frame(1.0 / 60).view()));
}

TEST_F(FilmPreviewTest, aFilmThatPlaysShowsFrameAfterFrameWhateverIsEditedOrResized) {
    take.project.exportSettings.fps = 30;
    open(std::make_unique<FakeOutput>(device), mediaClockNow); // the film is silent: its clock runs by itself
    preview->fit(take.project.canvas);
    std::vector<double> shown;
    std::vector<double> lags;
    QObject::connect(&*preview, &FilmPreview::pictureChanged, [&] {
        shown.push_back(preview->picture().at);
        lags.push_back(preview->playback()->position() - shown.back());
    });
    preview->playback()->play();
    bool isEdited = false;
    ASSERT_TRUE(comesTrue([&] {
        if (!isEdited && preview->playback()->position() > 0.8) {
            isEdited = true;
            project->edit("Change", [](DemoProject& edited) { edited.screen.padding = 0.2; });
            preview->fit({320, 180});
        }
        return preview->playback()->position() > 1.6;
    }));
    EXPECT_TRUE(preview->playback()->isPlaying());
    EXPECT_EQ(preview->picture().size, (Size2{320, 180}));
    EXPECT_EQ(preview->picture().revision, 2);
    EXPECT_TRUE(std::ranges::is_sorted(shown)) << "no picture is taken back";
    EXPECT_GT(shown.size(), 8U);
    EXPECT_LT(std::abs(median(lags)), 0.1);
    preview->playback()->pause();
    double const at = preview->playback()->position();
    ASSERT_TRUE(shows(at, 2)) << "at rest it is the very moment";
}

TEST_F(FilmPreviewTest, theItemShowsThePictureAsItWasDrawnInTheMiddleOfItsRoom) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    open();
    QQuickWindow window;
    window.resize(700, 400);
    window.setColor(Qt::black);
    PreviewItem item(window.contentItem());
    item.setSize({700, 400});
    item.setPreview(&*preview);
    window.show();
    preview->playback()->seek(1);
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(item.filmRect(), QRectF(30, 20, 640, 360));
    EXPECT_TRUE(comesTrue([&] {
        auto const grabbed = window.grabWindow().convertToFormat(QImage::Format_RGBX8888);
        return samePixels(viewOf(grabbed.copy(30, 20, 640, 360)), frame(1).view()) &&
               grabbed.pixel(10, 10) == qRgb(0, 0, 0);
    }));
    for (QPointF const point : {QPointF(0, 0), {0.5, 0.25}, {1, 1}})
        EXPECT_EQ(item.toFilm(item.fromFilm(point)), point);
    EXPECT_EQ(item.fromFilm({0.5, 0.5}), QPointF(350, 200));
    item.setSize({322, 400});
    EXPECT_TRUE(comesTrue([&] {
        return preview->picture().size == Size2{320, 180};
    })) << "it is drawn at the pixels that are seen";
    item.setPreview(nullptr);
}

/// A film that clicks twice a second, on a real sound server without hardware.
class PlayedFilmTest : public FilmPreviewTest {
protected:
    void SetUp() override {
        if (!TestSoundServer::isInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
        server.emplace();
        std::vector<std::int64_t> places;
        for (double at = between / 2; at < 3; at += between) places.push_back(std::llround(at * audioRate));
        writeSound(take.package.assetURL("clicks.caf"), ticks(3, places));
        take.project.audioTracks = {{.role = AudioRole::music, .clips = {{.asset = "clicks.caf", .duration = 3}}}};
        open(std::make_unique<PulseOutput>(server->address()), mediaClockNow);
        preview->fit({320, 180});
    }

    static constexpr double between = 0.5;
    std::optional<TestSoundServer> server;
};

TEST_F(PlayedFilmTest, whatIsHeardIsWhereThePictureIs) {
    HeardClicks const heard(server->address());
    std::vector<double> starts; // moments of the media clock at which the film would have begun
    std::vector<double> lags;
    QObject::connect(&*preview, &FilmPreview::pictureChanged, [&] {
        double const position = preview->playback()->position();
        if (!preview->playback()->clock().isRunning()) return;
        starts.push_back(mediaClockNow() - position);
        lags.push_back(position - preview->picture().at);
    });
    preview->playback()->play();
    ASSERT_TRUE(comesTrue([&] { return !preview->playback()->isPlaying(); }));
    EXPECT_EQ(preview->playback()->noSound(), "");
    auto const clicks = heard.moments();
    ASSERT_GE(clicks.size(), 5U);
    std::vector<double> differences;
    for (double const click : clicks) {
        double const at = click - median(starts) - between / 2;
        differences.push_back(std::abs(at - std::round(at / between) * between));
    }
    EXPECT_LT(median(differences), 0.02);
    EXPECT_LT(std::abs(median(lags)), 0.1);
}

TEST_F(PlayedFilmTest, aServerWhoseOutputGoesLetsTheFilmPlayOnAndIsJoinedWhenItIsBack) {
    preview->playback()->loop(0, 3);
    ASSERT_TRUE(comesTrue([&] { return preview->playback()->position() > 0.2; }));
    server->order("unload-module module-null-sink");
    ASSERT_TRUE(comesTrue([&] { return !preview->playback()->noSound().isEmpty(); }));
    double const silent = preview->playback()->position();
    EXPECT_TRUE(comesTrue([&] { return preview->playback()->position() > silent + 0.2; }));
    server->order("load-module module-null-sink sink_name=out rate=48000");
    EXPECT_TRUE(comesTrue([&] { return preview->playback()->noSound().isEmpty(); }));
    EXPECT_TRUE(preview->playback()->isPlaying());
    HeardClicks const heard(server->address());
    EXPECT_TRUE(comesTrue([&] { return heard.moments().size() > 1; }));
}

}
