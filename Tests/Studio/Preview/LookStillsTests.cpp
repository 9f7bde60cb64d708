#include "../../Render/Export/TestTake.h"
#include "../Editor/TestEditor.h"

#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>
#include <Tavaro/Studio/Preview/LookStills.h>

#include <TavaroCore/Style/BackgroundPreset.h>
#include <TavaroCore/Style/CameraLook.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <set>

namespace tavaro {

namespace {

class LookStillsTest : public testing::Test {
protected:
    LookStillsTest() {
        take.project.metadata.edit().clicks = {{.t = 1, .position = {0.25, 0.5}}};
        take.project.metadata.edit().cursorSamples = {{.t = 0, .position = {0.25, 0.5}},
                                                      {.t = 3, .position = {0.25, 0.5}}};
        take.package.save(take.project);
        session.emplace(queue, std::make_shared<OpenProject>(readProject(take.package.url())));
        stills.emplace(queue, *session);
    }

    QImage drawn(LookSubject subject, std::string const& path = {}, JSONValue const& value = {},
                 Size2 room = {96, 60}) {
        LookStills::Look look{subject, {}, room};
        if (!path.empty()) look.changes.push_back({path, value});
        std::optional<QImage> picture;
        auto const interest = stills->draw(look, [&](QImage const& still) { picture = still; });
        TestEditor::waitFor([&] { return picture.has_value(); });
        return picture.value_or(QImage());
    }

    TestTake take{"looks"};
    MainQueue queue;
    QueueInLoop loop{queue};
    std::optional<EditorSession> session;
    std::optional<LookStills> stills;
};

std::string bytes(QImage const& image) {
    return {reinterpret_cast<char const*>(image.constBits()), static_cast<std::size_t>(image.sizeInBytes())};
}

}

TEST_F(LookStillsTest, everyBackgroundIsAPictureOfItsOwn) {
    std::set<std::string> pictures;
    for (auto const& preset : BackgroundPreset::all()) {
        auto const picture = drawn(LookSubject::background, "background.preset", preset.id);
        ASSERT_FALSE(picture.isNull()) << preset.id;
        EXPECT_TRUE(pictures.insert(bytes(picture)).second) << preset.id;
    }
}

TEST_F(LookStillsTest, backgroundsAreKeptAsLongAsAllOfThemAreSmall) {
    auto const preset = BackgroundPreset::all().front().id;
    auto const isKept = [&](Size2 room) {
        bool isThere = false;
        LookStills::Look const look{LookSubject::background, {{"background.preset", preset}}, room};
        auto const interest = stills->draw(look, [&](QImage const&) { isThere = true; });
        return isThere;
    };
    auto const draw = [&](Size2 room) {
        EXPECT_FALSE(drawn(LookSubject::background, "background.preset", preset, room).isNull());
    };
    draw({96, 60});
    EXPECT_TRUE(isKept({96, 60}));
    for (int i = 0; i < 4; ++i) draw({1000 + 16 * i, 600}); // 2.3 MiB each
    EXPECT_FALSE(isKept({96, 60}));
    EXPECT_TRUE(isKept({1048, 600}));
}

TEST_F(LookStillsTest, everyChoiceIsTriedOnTheFilmWithoutChangingIt) {
    // The take is so small that else all of it lies in the light of a spotlight.
    session->edit("Small Pointer", [](DemoProject& project) { project.cursor.size = 0.2; });
    auto const before = encodeProject(session->document());
    auto const differ = [&]<class Choice>(LookSubject subject, char const* path, Choice) {
        std::set<std::string> pictures;
        for (auto const name : namesOf(Choice{})) {
            auto const picture = drawn(subject, path, std::string(name));
            ASSERT_FALSE(picture.isNull()) << path << " " << name;
            EXPECT_TRUE(pictures.insert(bytes(picture)).second) << path << " " << name;
        }
    };
    differ(LookSubject::film, "screen.frame", DeviceFrame{});
    differ(LookSubject::captions, "captions.style", CaptionStyle{});
    differ(LookSubject::pointer, "cursor.style", CursorStyle{});
    differ(LookSubject::pointer, "cursor.clickEffect", ClickEffect{});
    EXPECT_EQ(encodeProject(session->document()), before);
    EXPECT_EQ(session->project().steps().size(), 1u);
}

TEST_F(LookStillsTest, theCamerasLooksAreTriedOnWhatItSees) {
    std::filesystem::copy_file(take.package.assetURL("screen.mp4"), take.package.assetURL("camera.mp4"));
    session->edit("Camera", [](DemoProject& project) {
        project.cameraAsset = "camera.mp4";
        project.assetDurations["camera.mp4"] = 3;
        project.camera.isEnabled = false; // looks are chosen before it is switched on, too
    });
    std::set<std::string> pictures;
    for (auto const look : cameraLookPresets()) {
        auto const picture = drawn(LookSubject::camera, "camera.look", std::string(nameOf(look)));
        ASSERT_FALSE(picture.isNull()) << nameOf(look);
        EXPECT_TRUE(pictures.insert(bytes(picture)).second) << nameOf(look);
    }
}

TEST_F(LookStillsTest, theFilmIsDrawnAsItIsAtThePlayhead) {
    session->setPlayhead(1.5);
    auto const picture = drawn(LookSubject::film);
    auto painter = framePainter(session->document(), take.package, {picture.width(), picture.height()});
    auto const frame = filmFrame(painter, 1.5);
    ImageView const shown{picture.constBits(), picture.width(), picture.height(), picture.bytesPerLine()};
    EXPECT_TRUE(samePixels(shown, frame.view()));
}

TEST_F(LookStillsTest, whatCannotBeShownIsNoPicture) {
    EXPECT_TRUE(drawn(LookSubject::camera, "camera.look", "warm").isNull()) << "there is no camera";
    EXPECT_TRUE(drawn(LookSubject::film, "screen.frame", "hologram").isNull());
    EXPECT_FALSE(drawn(LookSubject::film, "screen.frame", "imac").isNull()) << "the next one is drawn again";
}

TEST_F(LookStillsTest, anEditIsFollowedOnceItSettles) {
    int changes = 0;
    QObject::connect(&*stills, &LookStills::changed, [&] { ++changes; });
    for (int i = 1; i <= 5; ++i)
        session->edit("Change", [&](DemoProject& project) { project.screen.padding = i / 50.0; });
    EXPECT_EQ(changes, 0);
    TestEditor::waitFor([&] { return changes > 0; });
    EXPECT_EQ(changes, 1);
}

}
