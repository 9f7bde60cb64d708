#include "../Editor/TestEditor.h"
#include "../Playback/FakeOutput.h"

#include <Tavaro/Studio/Desk/EditorDesk.h>
#include <Tavaro/Studio/Desk/PlayingChoices.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <gtest/gtest.h>

#include <optional>

using namespace tavaro;

namespace {

/// Ten seconds after a title card of three.
DemoProject film() {
    DemoProject project;
    project.assetDurations["screen.mp4"] = 10;
    project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .duration = 10}};
    project.intro = TitleCard{.text = "Welcome", .duration = 3};
    project.zoomEvents = {{.start = 1, .duration = 3}, {.start = 6, .duration = 2}};
    return project;
}

class EditorDeskTest : public testing::Test {
protected:
    EditorDeskTest() {
        desk.emplace(queue, project.open(), FilmPlayback::Means{std::make_unique<FakeOutput>(device), {}});
        desk->showIn(&timeline);
    }
    DemoProject const& document() const { return project.document(); }
    FilmPlayback& playback() { return *desk->preview()->playback(); }

    MainQueue queue;
    TestProject project{film()};
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    TimelineItem timeline;
    std::optional<EditorDesk> desk;
};

}

TEST_F(EditorDeskTest, thePlayheadAndTheFilmAreAtOneMomentWhoeverMovesThem) {
    EXPECT_EQ(playback().position(), 3) << "the edit begins behind its title card";
    desk->session()->setPlayhead(4);
    EXPECT_EQ(playback().position(), 7);
    playback().seek(5);
    EXPECT_EQ(desk->session()->playhead(), 2);
    timeline.ask(timelineIntents::Scrub{6.5});
    timeline.ask(timelineIntents::ScrubEnded{});
    EXPECT_EQ(desk->session()->playhead(), 6.5);
    EXPECT_EQ(playback().position(), 9.5);
    playback().seek(1); // inside the card
    EXPECT_EQ(desk->session()->playhead(), 0);
    EXPECT_EQ(playback().position(), 1) << "the film stays where it was put";
}

TEST_F(EditorDeskTest, howFilmsArePlayedIsKeptAndTheSameForAllThatAreOpen) {
    auto const file = project.package().url() / "preferences.json";
    {
        Preferences preferences(file);
        EditorDesk other(queue, project.open(), {std::make_unique<FakeOutput>(device), {}});
        PlayingChoices const choices(preferences, *desk), others(preferences, other);
        for (double const volume : {0.9, 0.5, 0.25}) playback().setVolume(volume);
        desk->setLoops(true);
        playback().setMuted(true);
        TestEditor::waitFor([&] { return other.loops(); });
        EXPECT_TRUE(other.preview()->playback()->isMuted());
        EXPECT_EQ(other.preview()->playback()->volume(), 0.25);
        other.preview()->playback()->setScrubsAloud(false);
    }
    Preferences preferences(file);
    EditorDesk next(queue, project.open(), {std::make_unique<FakeOutput>(device), {}});
    PlayingChoices const choices(preferences, next);
    EXPECT_EQ(next.preview()->playback()->volume(), 0.25);
    EXPECT_TRUE(next.preview()->playback()->isMuted());
    EXPECT_TRUE(next.loops());
    EXPECT_FALSE(next.preview()->playback()->scrubsAloud()) << "also what was chosen just before the end";
}

TEST_F(EditorDeskTest, anExportAsGIFLeavesTheStepsOfTheEditAsTheyAre) {
    auto const use = [&](ExportContainer container, std::int64_t fps) {
        desk->session()->edit("Export Settings", [&](DemoProject& project) {
            project.exportSettings.container = container;
            project.exportSettings.fps = fps;
        });
        desk->session()->setPlayhead(0);
        desk->session()->step(1);
    };
    use(ExportContainer::gif, 15);
    EXPECT_NEAR(desk->session()->playhead(), 1.0 / 60, 1e-9);
    EXPECT_EQ(timeline.frameRate(), 60);
    use(ExportContainer::mp4, 25);
    EXPECT_NEAR(desk->session()->playhead(), 1.0 / 25, 1e-9);
    EXPECT_EQ(timeline.frameRate(), 25) << "also where it is dragged";
}

TEST_F(EditorDeskTest, aHandOnTheTimelineEditsTheProjectAndSeesIt) {
    auto const zoom = document().zoomEvents[0].id;
    timeline.ask(timelineIntents::Select{{zoom}});
    EXPECT_EQ(desk->session()->selection(), std::vector{zoom});
    EXPECT_EQ(timeline.selection(), std::set{zoom});
    timeline.ask(timelineIntents::EditBegan{"Move Zoom"});
    for (double const by : {0.5, 1.0}) timeline.ask(timelineIntents::MoveItems{{zoom}, by});
    timeline.ask(timelineIntents::EditEnded{});
    EXPECT_EQ(document().zoomEvents[0].start, 2);
    EXPECT_EQ(desk->session()->undoName(), "Move Zoom");
    desk->session()->undo();
    EXPECT_EQ(document().zoomEvents[0].start, 1);
    EXPECT_EQ(timeline.layout().find(zoom)->item.start, 1);
    timeline.ask(timelineIntents::ToggleLane{"zooms"});
    EXPECT_EQ(desk->session()->collapsedLanes(), QStringList{"zooms"});
    timeline.ask(timelineIntents::ToggleLane{"zooms"});
    EXPECT_TRUE(desk->session()->collapsedLanes().isEmpty());
}

TEST_F(EditorDeskTest, theMarkedSpanPlaysOverAndOverWhileThatIsWanted) {
    auto& session = *desk->session();
    session.setRange(2, 1);
    playback().play();
    EXPECT_LT(playback().position(), 5) << "from where the playhead is";
    desk->setLoops(true);
    EXPECT_GE(playback().position(), 5) << "behind the title card";
    EXPECT_LE(playback().position(), 6);
    session.setRange(7, 2);
    EXPECT_GE(playback().position(), 10);
    playback().pause();
    session.clearRange();
    session.setPlayhead(4);
    playback().play();
    EXPECT_LT(playback().position(), 9) << "all of it plays";
}

TEST_F(EditorDeskTest, whatIsNoLongerShownIsLetGoOf) {
    TimelineItem other;
    desk->showIn(&other);
    EXPECT_EQ(timeline.project(), nullptr);
    EXPECT_EQ(other.project(), &document());
    desk.reset();
    EXPECT_EQ(other.project(), nullptr);
    other.ask(timelineIntents::Scrub{1}); // nobody is there to ask
}
