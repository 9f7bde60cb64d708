#include "../Export/TestTake.h"
#include "NudgedRecord.h"

#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Painter/FramePainter.h>
#include <TavaroRender/Painter/PaintError.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <set>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr Size2 small{192, 108};

void writeColor(fs::path const& file, char const* pixel) {
    Image picture(32, 16);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) std::memcpy(picture.row(y) + 4 * x, pixel, 4);
    }
    writePNG(file, picture.view());
}

void writeTable(fs::path const& file, double red = 0.5) {
    std::ofstream table(file);
    table << "LUT_3D_SIZE 2\n";
    for (int i = 0; i < 8; ++i) table << red * (i & 1) << " " << (i >> 1 & 1) << " " << (i >> 2) << "\n";
}

/// A take that shows something of every part of the document: camera with table and matte, background image, zooms,
/// texts, regions.
struct FullTake : TestTake {
    explicit FullTake(std::string const& name) : TestTake(name, 60) {
        auto const screen = package.assetURL("screen.mp4");
        fs::copy_file(screen, package.assetURL("camera.mp4"));
        fs::copy_file(screen, package.assetURL("camera.matte.mp4"));
        writeTable(package.assetURL("look.cube"));
        writeColor(package.assetURL("beach.png"), "\xF0\x20\x20\xFF");
        addCamera();
        addEdit();
    }

    void addCamera() {
        project.cameraAsset = "camera.mp4";
        project.assetDurations = {{"camera.mp4", 2}, {"screen.mp4", 2}};
        project.camera = {.shape = CameraShape::full,
                          .size = 0.4,
                          .avoidsContent = true,
                          .cutout = true,
                          .tracksFace = true,
                          .faceZoom = 1.5,
                          .hidesWhenSilent = true,
                          .look = CameraLook::lut,
                          .lutAsset = "look.cube"};
        project.cameraFaces =
            std::vector<FaceSample>{{.t = 0, .rect = {0.2, 0.2, 0.2, 0.3}}, {.t = 1, .rect = {0.6, 0.3, 0.2, 0.3}}};
        project.layoutCues = {{.time = 1.1, .scene = SceneLayout::split}};
        project.cameraMoves = {{.time = 0.6, .placement = CameraPlacement::topLeft}};
        project.transcript = Transcript{.words = {{.text = "spoken", .start = 0.1, .end = 0.5, .confidence = 1},
                                                  {.text = "words", .start = 0.6, .end = 0.9, .confidence = 1}}};
    }

    void addEdit() {
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 1},
                                  {.asset = "screen.mp4", .start = 1, .sourceStart = 1, .duration = 0.9}};
        project.background.content = BackgroundStyle::ImageFile{.assetName = "beach.png", .blur = 4};
        project.exportSettings.fit = ContentFit::fill;
        project.cursor.idleHideAfter = 0.4;
        project.cursor.motionBlur = 0.5;
        auto& log = project.metadata.edit();
        log.clicks = {{.t = 0.3, .position = {0.4, 0.5}}, {.t = 1.2, .position = {0.8, 0.8}}};
        log.micLevels = std::vector<float>(20, 0.1f);
        project.zoomEvents = {
            {.start = 0.2, .duration = 0.7, .rampIn = 0.2, .rampOut = 0.2, .scale = 1.8, .followsCursor = true},
            {.start = 1.2, .duration = 0.5, .rampIn = 0.1, .rampOut = 0.1, .scale = 2, .style = ZoomStyle::loupe}};
        project.overlays = {
            {.kind = {OverlayKind::Callout{.text = "Look here"}}, .start = 0.1, .duration = 0.8},
            {.kind = {OverlayKind::Blur{{0.2, 0.2, 0.3, 0.2}}}, .start = 0.4, .duration = 0.6},
            {.kind = {OverlayKind::Highlight{{0.5, 0.5, 0.3, 0.3}}}, .start = 1, .duration = 0.5},
        };
        project.captions.isEnabled = true;
        project.captions.cues = {{.start = 0.2,
                                  .duration = 1,
                                  .text = "spoken words",
                                  .words = {{"spoken", 0.2, 0.6}, {"words", 0.7, 1.1}}}};
        project.redactions = std::vector<RedactionTrack>{
            {.start = 0.5, .end = 1.5, .keyframes = {{0.5, {0.1, 0.05, 0.3, 0.2}}, {1.5, {0.4, 0.3, 0.3, 0.2}}}}};
        project.intro = TitleCard{.text = "Intro", .duration = 0.3};
    }
};

/// The frame, or what was said instead of it.
struct Outcome {
    Image image;
    std::string sentence;
};

Outcome outcome(FramePainter& painter, double at) {
    try {
        return {painter.still(at), ""};
    } catch (Error const& error) {
        return {Image(), error.what()};
    }
}

std::string nameOfField(int number) {
    std::string name;
    int n = 0;
    forEachField<DemoProject>([&](auto const& field) {
        if (n++ == number) name = field.name;
    });
    return name;
}

/// Two in three edits go on from the one before, the others from the take, so that it does not fall to pieces.
TEST(FramePainter, aPainterThatFollowsTheEditsDrawsWhatANewOneDoes) {
    FullTake take("walk");
    constexpr int fields = static_cast<int>(fieldCount<DemoProject>);
    for (unsigned seed = 1; seed <= 2; ++seed) {
        NudgedRecord random(seed);
        FramePainter painter(take.package, small, {.threads = 1});
        painter.show(take.project);
        auto project = take.project;
        auto canvas = small;
        int drawn = 0;
        for (int step = 0; step < fields; ++step) {
            if (random.below(3) == 0) project = take.project;
            random.nudgeField(project, step);
            if (random.below(10) == 0) painter.resize(canvas = {160 + 2 * random.below(40), 90 + 2 * random.below(40)});
            painter.show(project);
            FramePainter fresh(take.package, canvas, {.threads = 1});
            fresh.show(project);
            for (int i = 0; i < 2; ++i) {
                double const at = random.upTo(2.3);
                auto const followed = outcome(painter, at);
                auto const expected = outcome(fresh, at);
                auto const where = "seed " + std::to_string(seed) + ", step " + std::to_string(step) + " in " +
                                   nameOfField(step) + " at " + std::to_string(at);
                ASSERT_EQ(followed.sentence, expected.sentence) << where;
                ASSERT_TRUE(samePixels(followed.image.view(), expected.image.view())) << where;
                if (expected.sentence.empty()) ++drawn;
            }
        }
        EXPECT_GT(2 * drawn, 3 * fields) << "most edits leave something to draw";
    }
}

TEST(FramePainter, anotherTableColoursTheSamePictureAnew) {
    FullTake take("tables");
    take.project.transcript.reset();
    take.project.camera.hidesWhenSilent = false;
    FramePainter painter(take.package, small);
    std::vector<Image> frames;
    for (int i = 0; i < 8; ++i) {
        auto const asset = "look" + std::to_string(i) + ".cube";
        writeTable(take.package.assetURL(asset), i / 8.0);
        take.project.camera.lutAsset = asset;
        painter.show(take.project);
        frames.push_back(painter.still(0.8));
    }
    for (std::size_t i = 1; i < frames.size(); ++i)
        EXPECT_FALSE(samePixels(frames[i].view(), frames[i - 1].view())) << i;
}

TEST(FramePainter, moviesStayOpenFromOneRevisionToTheNext) {
    FullTake take("open");
    FramePainter painter(take.package, small);
    painter.show(take.project);
    painter.frame(0.5);
    for (auto const* movie : {"screen.mp4", "camera.mp4", "camera.matte.mp4", "look.cube", "beach.png"})
        fs::remove(take.package.assetURL(movie));
    for (int i = 0; i < 5; ++i) {
        take.project.overlays[0].fontSize += 4;
        painter.show(take.project);
        EXPECT_NO_THROW(painter.frame(0.4 + 0.2 * i));
        EXPECT_TRUE(painter.dropped().empty());
    }
    painter.resize({256, 144});
    EXPECT_EQ(painter.frame(0.8).width, 256);
    FramePainter fresh(take.package, small);
    fresh.show(take.project);
    EXPECT_THROW(fresh.frame(0.5), PaintError) << "the movies are gone";
}

TEST(FramePainter, anEditThatDoesNotShowDrawsNothing) {
    FullTake take("unseen");
    FramePainter painter(take.package, small);
    painter.show(take.project);
    painter.frame(0.8);
    EXPECT_EQ(painter.framesDrawn(), 1);
    take.project.name = "Another";
    take.project.overlays[2].fontSize = 80; // of a moment that is not drawn
    take.project.cameraMoves.push_back({.time = 1.8});
    painter.show(take.project);
    painter.frame(0.8);
    EXPECT_EQ(painter.framesDrawn(), 1);
    EXPECT_EQ(painter.revision(), 2);
    take.project.overlays[0].fontSize = 80;
    painter.show(take.project);
    painter.frame(0.8);
    EXPECT_EQ(painter.framesDrawn(), 2);
}

TEST(FramePainter, whatCannotBeUsedIsListedWhereItIsMissedAndGoneOnceItIsMended) {
    struct Case {
        Effect effect;
        std::string asset;   // that is taken away
        std::string subject; // that is listed
        std::string sentence;
    };
    std::vector<Case> const cases{
        {Effect::colorTable, "look.cube", "look.cube",
         "The camera is shown without its colours. The colour table 'look.cube' is missing."},
        {Effect::matte, "camera.matte.mp4", "camera.mp4",
         "The camera's movie 'camera.mp4' has no matte to cut the person out with, so all of it is shown."},
        {Effect::background, "beach.png", "beach.png", "The background is shown without its picture. "},
    };
    std::set<Effect> tried{Effect::layer}; // in a process of its own, below
    for (auto const& it : cases) {
        FullTake take("dropped");
        take.project.transcript.reset();
        take.project.camera.hidesWhenSilent = false;
        tried.insert(it.effect);
        FramePainter whole(take.package, small);
        whole.show(take.project);
        auto const expected = whole.still(0.8);
        auto const file = take.package.assetURL(it.asset);
        fs::rename(file, take.folder / "away");

        FramePainter painter(take.package, small);
        painter.show(take.project);
        auto const without = painter.still(0.8);
        EXPECT_FALSE(samePixels(without.view(), expected.view())) << it.asset;
        take.project.name = "Later";
        painter.show(take.project);
        painter.frame(0.8);
        auto const dropped = painter.dropped();
        ASSERT_EQ(dropped.size(), 1u) << it.asset;
        EXPECT_EQ(dropped[0].effect, it.effect);
        EXPECT_EQ(dropped[0].subject, it.subject);
        EXPECT_EQ(dropped[0].sentence.rfind(it.sentence, 0), 0u) << dropped[0].sentence;
        EXPECT_EQ(dropped[0].since, 1) << "it was missed before the second revision";

        fs::rename(take.folder / "away", file);
        painter.show(take.project);
        EXPECT_TRUE(samePixels(painter.still(0.8).view(), expected.view())) << it.asset;
        EXPECT_TRUE(painter.dropped().empty()) << it.asset;
    }
    EXPECT_EQ(tried.size(), namesOf(Effect{}).size());
}

/// What a painter that stops says without fonts, after one that drops has listed what it left out.
std::optional<PaintError::Kind> failureWithoutFonts() {
    FullTake take("fontless");
    auto const config = take.folder / "fonts.conf";
    std::ofstream(config) << "<fontconfig><dir>/nowhere</dir></fontconfig>";
    setenv("FONTCONFIG_FILE", config.c_str(), 1);
    FramePainter painter(take.package, small);
    painter.show(take.project);
    painter.frame(0.8);
    for (auto const& dropped : painter.dropped())
        std::fprintf(stderr, "%s:%s ", std::string(nameOf(dropped.effect)).c_str(), dropped.subject.c_str());
    FramePainter strict(take.package, small, {.failure = EffectFailure::stop});
    strict.show(take.project);
    try {
        strict.frame(0.8);
    } catch (PaintError const& error) {
        return error.kind();
    }
    return std::nullopt;
}

/// The process's list of fonts is read once, so in a process of its own.
void drawWithoutFonts() { std::exit(failureWithoutFonts() == PaintError::Kind::effect ? 7 : 8); }

TEST(FramePainterDeathTest, aTextWithoutAFontIsLeftOutOfAPreviewAndStopsAnExport) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(drawWithoutFonts(), testing::ExitedWithCode(7), "layer:callout layer:caption");
}

TEST(FramePainter, whyAFrameCannotBeDrawnIsSaidInTheWordsOfWhoeverAsked) {
    struct Case {
        PaintError::Kind kind;
        std::string sentence;
        std::string exported; // what an export says
        std::function<void(FullTake&)> spoil;
        Size2 canvas = small;
    };
    using Kind = PaintError::Kind;
    auto const write = [](FullTake& take, char const* asset) {
        std::ofstream(take.package.assetURL(asset)) << "noise";
    };
    auto const sound = [](FullTake& take) {
        auto const file = take.package.assetURL("screen.mp4").string();
        auto const command = "ffmpeg -v quiet -y -f lavfi -i sine=d=1 -c:a aac '" + file + "'";
        return std::system(command.c_str());
    };
    std::vector<Case> const cases{
        {Kind::missingAsset, "Missing asset 'screen.mp4' in the project.", "",
         [](FullTake& take) { fs::remove(take.package.assetURL("screen.mp4")); }},
        {Kind::missingAsset, "Missing asset 'camera.mp4' in the project.", "",
         [](FullTake& take) { fs::remove(take.package.assetURL("camera.mp4")); }},
        {Kind::missingAsset, "Missing asset 'beach.png' in the project.", "",
         [](FullTake& take) { fs::remove(take.package.assetURL("beach.png")); }},
        {Kind::missingAsset, "Missing asset 'look.cube' in the project.", "",
         [](FullTake& take) { fs::remove(take.package.assetURL("look.cube")); }},
        {Kind::unreadable, "Could not read the recording: it is damaged, or not a movie (screen.mp4)", "",
         [&](FullTake& take) { write(take, "screen.mp4"); }},
        {Kind::effect, "The background picture 'beach.png' cannot be used: it is damaged, or not a PNG picture.", "",
         [&](FullTake& take) { write(take, "beach.png"); }},
        {Kind::effect, "The colour table 'look.cube' cannot be used. ", "The colour table 'look.cube' cannot be used. ",
         [&](FullTake& take) { write(take, "look.cube"); }},
        {Kind::noVideoTrack, "The recording has no video track.", "", [&](FullTake& take) { sound(take); }},
        {Kind::nothingToShow, "Could not read the recording: the timeline shows nothing of it", "",
         [](FullTake& take) {
             take.project.timeline.clips.clear();
             take.project.intro.reset();
         }},
        {Kind::nothingToShow, "Could not read the recording: the timeline is longer than a movie can be", "",
         [](FullTake& take) { take.project.timeline.clips[1].duration = 1e9; }},
        {Kind::nothingToShow, "Could not read the recording: the project gives its size as 0 × 0 pixels", "",
         [](FullTake& take) { take.project.sourceSize = {}; }},
        {Kind::undrawableSize,
         "Could not draw the frame: a movie is at least 16 and at most 16384 pixels wide and high, not 192 × 4",
         "Could not write the export: a movie is at least 16 and at most 16384 pixels wide and high, not 192 × 4",
         [](FullTake&) {},
         {192, 4}},
    };
    for (auto const& it : cases) {
        FullTake take("errors");
        it.spoil(take);
        FramePainter painter(take.package, it.canvas, {.failure = EffectFailure::stop});
        painter.show(take.project);
        try {
            painter.frame(0.8);
            ADD_FAILURE() << "drawn in spite of: " << it.sentence;
        } catch (PaintError const& error) {
            EXPECT_EQ(error.kind(), it.kind) << error.what();
            EXPECT_EQ(std::string(error.what()).rfind(it.sentence, 0), 0u) << error.what();
            std::string const exported = ExportError::of(error).what();
            EXPECT_EQ(exported.rfind(it.exported.empty() ? it.sentence : it.exported, 0), 0u) << exported;
        }
    }
    EXPECT_STREQ(ExportError::of(PaintError::noMemory()).what(),
                 "Could not write the export: there is not enough memory for frames of this size");
}

TEST(FramePainter, theTwoHalvesOfAFrameMakeTheFrame) {
    FullTake take("halves");
    FramePainter painter(take.package, small);
    painter.show(take.project);
    auto const whole = painter.still(0.9);
    painter.still(0.2);
    EXPECT_TRUE(samePixels(painter.draw(0.9, painter.pictures(0.9)), whole.view()));
}

}

}
