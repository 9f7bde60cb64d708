#include <Tavaro/Studio/Timeline/IntentEdits.h>
#include <Tavaro/Studio/Timeline/TimelineGestures.h>

#include <TavaroCore/Project/DemoProject.h>

#include <Tests/Core/Editing/RandomDocument.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

using namespace tavaro;
using namespace tavaro::timelineIntents;

namespace {

/// A timeline whose intents are carried out at once, as an editor does: a hand on it, and the document that comes of
/// it.
class Desk {
public:
    explicit Desk(DemoProject document) : project(std::move(document)), view_() {
        layout_.show(project);
        view_.resize(1128, 1500); // a thousand points of time
        view_.setContent(layout_.content());
        view_.setScale(0.1, 0);
    }

    void press(double time, UUID const& on, double share = 0.75) {
        feed(&TimelineGestures::press, point(time, on, share));
    }
    void move(double time) { feed(&TimelineGestures::move, moved(time)); }
    void release() { feed(&TimelineGestures::release, last_); }
    void cancel() { take(gestures.cancel()); }
    void drag(UUID const& id, double from, double to, double share = 0.75) {
        press(from, id, share);
        for (int i = 1; i <= 8; ++i) move(from + (to - from) * i / 8);
        release();
    }
    /// Somebody else edits.
    void become(DemoProject document) {
        project = std::move(document);
        before_.reset();
        layout_.show(project);
    }
    void pressAt(double time, double y) { feed(&TimelineGestures::press, at(view_.x(time), y)); }
    void moveTo(double time, double y) { feed(&TimelineGestures::move, at(view_.x(time), y)); }
    void doubleClick(double time, UUID const& on) { feed(&TimelineGestures::doubleClick, point(time, on, 0.75)); }

    TimelinePointer point(double time, UUID const& on, double share) {
        auto const box = layout_.box(view_, *layout_.find(on));
        return at(view_.x(time), box.y + box.height * share);
    }
    TimelinePointer at(double x, double y) {
        last_ = keys;
        last_.x = x;
        last_.y = y;
        return last_;
    }

    DemoProject project;
    std::set<UUID> selection;
    double playhead = -100;
    bool snaps = false;
    TimelinePointer keys; // held while pressing
    TimelineGestures gestures;
    std::vector<std::string> steps; // finished
    std::vector<UUID> opened;
    double lastMagnet = 0;

private:
    using Handler = TimelineGestures::Intents (TimelineGestures::*)(GestureScene const&, TimelinePointer const&);

    TimelinePointer moved(double time) {
        last_.x = view_.x(time);
        return last_;
    }
    void feed(Handler handler, TimelinePointer const& pointer) {
        take((gestures.*handler)({{layout_, view_, project, playhead}, selection, snaps}, pointer));
        if (gestures.caught()) lastMagnet = *gestures.caught();
    }
    void take(TimelineGestures::Intents const& intents) {
        for (auto const& intent : intents) take(intent);
        layout_.show(project);
    }
    void take(TimelineIntent const& intent) {
        if (auto const* select = std::get_if<Select>(&intent)) selection = select->ids;
        if (auto const* scrub = std::get_if<Scrub>(&intent)) playhead = scrub->time;
        if (auto const* open = std::get_if<Open>(&intent)) opened.push_back(open->id);
        if (auto const* begun = std::get_if<EditBegan>(&intent)) {
            before_ = project;
            name_ = begun->name;
        }
        if (std::holds_alternative<EditCancelled>(intent)) project = *before_;
        if (std::holds_alternative<EditEnded>(intent)) steps.push_back(name_);
        if (!before_) return;
        auto edited = *before_;
        carryOut(intent, edited);
        bool const isEdit = !std::holds_alternative<EditEnded>(intent) && !std::holds_alternative<Select>(intent);
        if (isEdit) project = edited;
        if (std::holds_alternative<EditEnded>(intent) || std::holds_alternative<EditCancelled>(intent)) before_.reset();
    }

    TimelineLayout layout_;
    TimelineView view_;
    TimelinePointer last_;
    std::optional<DemoProject> before_;
    std::string name_;
};

/// clips 0–40 and 40–80, zooms 10–20 and 30–38, a caption 50–55 with words, an overlay 60–70.
DemoProject document() {
    DemoProject project;
    project.assetDurations["a.mp4"] = 200;
    project.timeline.clips = {{.asset = "a.mp4", .start = 0, .sourceStart = 20, .duration = 40},
                              {.asset = "a.mp4", .start = 40, .sourceStart = 100, .duration = 40}};
    project.zoomEvents = {{.start = 10, .duration = 10, .rampIn = 2, .rampOut = 3}, {.start = 30, .duration = 8}};
    project.captions.cues = {
        {.start = 50, .duration = 5, .text = "hello there", .words = {{"hello", 50, 52}, {"there", 52, 55}}}};
    project.overlays = {{.start = 60, .duration = 10}};
    return project;
}

}

TEST(Gestures, aPressSelectsAndKeysAddToIt) {
    Desk desk(document());
    auto const zoom = desk.project.zoomEvents[0].id, second = desk.project.zoomEvents[1].id,
               overlay = desk.project.overlays[0].id;
    desk.press(15, zoom);
    EXPECT_THAT(desk.selection, testing::UnorderedElementsAre(zoom));
    desk.release();
    desk.keys.isControlHeld = true;
    desk.press(65, overlay);
    desk.release();
    EXPECT_THAT(desk.selection, testing::UnorderedElementsAre(zoom, overlay));
    desk.press(65, overlay);
    desk.release();
    EXPECT_THAT(desk.selection, testing::UnorderedElementsAre(zoom));
    desk.keys = {.isShiftHeld = true};
    desk.press(15, zoom);
    desk.release();
    desk.press(34, second);
    desk.release();
    EXPECT_THAT(desk.selection, testing::UnorderedElementsAre(zoom, second));
    desk.keys = {};
    desk.press(15, zoom);
    EXPECT_EQ(desk.selection.size(), 2u) << "what is selected may be dragged together";
    desk.release();
    EXPECT_THAT(desk.selection, testing::UnorderedElementsAre(zoom));
    EXPECT_TRUE(desk.steps.empty());
    EXPECT_EQ(desk.project, document().id == desk.project.id ? document() : desk.project);
}

TEST(Gestures, aSmallTremorIsNoDrag) {
    Desk desk(document());
    auto const before = desk.project;
    desk.press(15, desk.project.zoomEvents[0].id);
    desk.move(15.3); // three points
    desk.release();
    EXPECT_EQ(desk.project, before);
    EXPECT_TRUE(desk.steps.empty());
}

TEST(Gestures, whatIsSelectedMovesTogetherAsOneStepAndStaysInTheFilm) {
    Desk desk(document());
    desk.selection = {desk.project.zoomEvents[0].id, desk.project.captions.cues[0].id};
    desk.drag(desk.project.zoomEvents[0].id, 15, 19);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].start, 14);
    EXPECT_DOUBLE_EQ(desk.project.captions.cues[0].start, 54);
    EXPECT_DOUBLE_EQ(desk.project.captions.cues[0].words[1].end, 59);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[1].start, 30);
    EXPECT_THAT(desk.steps, testing::ElementsAre("Move 2 Items"));
    desk.drag(desk.project.zoomEvents[0].id, 17, -60);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].start, 0);
    EXPECT_DOUBLE_EQ(desk.project.captions.cues[0].start, 40);
    desk.drag(desk.project.zoomEvents[0].id, 5, 500);
    EXPECT_DOUBLE_EQ(desk.project.captions.cues[0].range().end(), 80);
}

TEST(Gestures, edgesTrimAndAZoomsRampsFit) {
    Desk desk(document());
    auto const id = desk.project.zoomEvents[0].id;
    desk.drag(id, 10.2, 17.2);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].start, 17);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].end(), 20);
    EXPECT_NEAR(desk.project.zoomEvents[0].rampIn + desk.project.zoomEvents[0].rampOut, 3, 1e-9);
    desk.drag(id, 19.9, 2);
    EXPECT_GT(desk.project.zoomEvents[0].duration, 0);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].start, 17);
    desk.drag(desk.project.overlays[0].id, 69.8, 75.8);
    EXPECT_NEAR(desk.project.overlays[0].duration, 16, 1e-9);
    EXPECT_THAT(desk.steps, testing::ElementsAre("Trim Zoom", "Trim Zoom", "Trim Overlay"));
}

TEST(Gestures, aRampIsDraggedByItsHandle) {
    Desk desk(document());
    auto const id = desk.project.zoomEvents[0].id;
    desk.drag(id, 12, 14, 0.2);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].rampIn, 4);
    desk.drag(id, 17, 11, 0.2);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].rampOut, 6) << "the other ramp keeps its time";
    EXPECT_THAT(desk.steps, testing::ElementsAre("Change Zoom Ramp", "Change Zoom Ramp"));
}

TEST(Gestures, trimmingAClipRipplesAndGoingBackRestoresWhatWasPassed) {
    Desk desk(document());
    auto const before = desk.project;
    auto const clip = desk.project.timeline.clips[0].id;
    desk.press(39.9, clip);
    for (double const t : {35.0, 20.0, 8.0}) desk.move(t);
    EXPECT_NEAR(desk.project.timeline.clips[1].start, 8.1, 1e-9);
    EXPECT_EQ(desk.project.zoomEvents.size(), 0u);
    EXPECT_NEAR(desk.project.captions.cues[0].start, 18.1, 1e-9);
    desk.move(34.9);
    EXPECT_EQ(desk.project.zoomEvents.size(), 2u) << "the zooms that the drag went over are back";
    EXPECT_NEAR(desk.project.timeline.clips[1].start, 35, 1e-9);
    desk.cancel();
    EXPECT_EQ(desk.project, before);
    EXPECT_TRUE(desk.steps.empty());
    EXPECT_TRUE(desk.gestures.isIdle());
}

TEST(Gestures, aClipDroppedElsewhereTakesItsItemsAlong) {
    auto project = document();
    AudioTrack microphone{.role = AudioRole::microphone}, music{.role = AudioRole::music};
    microphone.clips = {{.asset = "a.mp4", .start = 0, .sourceStart = 20, .duration = 80}};
    music.clips = {{.asset = "m.mp3", .start = 3, .duration = 60}};
    project.audioTracks = {microphone, music};
    Desk desk(project);
    auto const clips = desk.project.timeline.clips;
    desk.drag(clips[0].id, 20, 75);
    EXPECT_EQ(desk.project.timeline.clips[0].id, clips[1].id);
    EXPECT_DOUBLE_EQ(desk.project.timeline.clips[1].start, 40);
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[0].start, 50);
    EXPECT_DOUBLE_EQ(desk.project.captions.cues[0].start, 10);
    auto const& sound = desk.project.audioTracks[0].clips;
    ASSERT_EQ(sound.size(), 2u);
    EXPECT_DOUBLE_EQ(sound[0].sourceStart, 60);
    EXPECT_DOUBLE_EQ(sound[1].start, 40);
    EXPECT_DOUBLE_EQ(sound[1].sourceStart, 20);
    EXPECT_EQ(desk.project.audioTracks[1], music);
    desk.drag(desk.project.timeline.clips[1].id, 60, 2);
    EXPECT_EQ(desk.project.zoomEvents[0].start, 10);
    EXPECT_EQ(desk.project.timeline, project.timeline) << "and back";
}

TEST(Gestures, slippingShowsOtherMomentsWithinTheMedia) {
    Desk desk(document());
    desk.keys.isAltHeld = true;
    auto const clip = desk.project.timeline.clips[0].id;
    desk.drag(clip, 20, 30);
    EXPECT_DOUBLE_EQ(desk.project.timeline.clips[0].sourceStart, 10);
    desk.drag(clip, 20, 79);
    EXPECT_DOUBLE_EQ(desk.project.timeline.clips[0].sourceStart, 0);
    EXPECT_DOUBLE_EQ(desk.project.timeline.clips[0].duration, 40);
    EXPECT_THAT(desk.steps, testing::ElementsAre("Slip Clip", "Slip Clip"));
}

TEST(Gestures, dragsCatchOnEdgesThePlayheadAndNeverOnThemselves) {
    Desk desk(document());
    desk.snaps = true;
    auto const overlay = desk.project.overlays[0].id;
    desk.drag(overlay, 65, 60.6); // starts at 55.6: the caption ends at 55
    EXPECT_DOUBLE_EQ(desk.project.overlays[0].start, 55);
    EXPECT_DOUBLE_EQ(desk.lastMagnet, 55);
    desk.playhead = 71.5;
    desk.drag(overlay, 60, 66.1); // ends at 71.1
    EXPECT_DOUBLE_EQ(desk.project.overlays[0].range().end(), 71.5);
    desk.drag(overlay, 66, 66.9);
    EXPECT_NEAR(desk.project.overlays[0].start, 62.4, 1e-9) << "its own old edge does not hold it";
    desk.drag(desk.project.zoomEvents[1].id, 37.9, 39.5); // the clip's edge is at 40
    EXPECT_DOUBLE_EQ(desk.project.zoomEvents[1].end(), 40);
}

TEST(Gestures, whatIsHiddenIsDraggedInTheRecordingsTimeWhereItIsHeld) {
    auto film = document(); // clips of 20–60 and 100–140
    film.redactions = std::vector<RedactionTrack>{
        {.asset = "a.mp4", .start = 30, .end = 40, .keyframes = {{30, {}}, {38, {}}}, .isAutomatic = true}};
    Desk desk(film);
    auto const id = film.redactions->front().id;
    auto const& track = [&]() -> RedactionTrack const& { return desk.project.redactions->front(); };
    desk.drag(id, 15, 18); // its box is at 10–20
    EXPECT_DOUBLE_EQ(track().start, 33);
    EXPECT_DOUBLE_EQ(track().keyframes.back().t, 41);
    EXPECT_FALSE(track().isAutomatic);
    desk.drag(id, 22.9, 20.9);
    EXPECT_NEAR(track().end, 41, 1e-9);
    desk.snaps = true;
    desk.playhead = 11;
    desk.drag(id, 13.1, 11.4);
    EXPECT_NEAR(track().start, 31, 1e-9) << "caught by the playhead";
    desk.press(15, id);
    desk.move(50);
    EXPECT_GT(track().start, 100) << "in the other clip";
    desk.move(16.2);
    EXPECT_NEAR(track().start, 32.2, 0.3) << "and back";
    desk.cancel();
    EXPECT_NEAR(track().start, 31, 1e-9);
    EXPECT_THAT(desk.steps, testing::ElementsAre("Move Redaction", "Trim Redaction", "Trim Redaction"));
}

TEST(Gestures, theRulerScrubsAndEmptyLanesSweep) {
    Desk desk(document());
    desk.pressAt(12, 10);
    EXPECT_NEAR(desk.playhead, 12, 1e-9);
    desk.moveTo(200, 10);
    EXPECT_DOUBLE_EQ(desk.playhead, 80);
    desk.release();

    auto const box = desk.point(0, desk.project.zoomEvents[0].id, 0.5);
    auto const below = desk.point(0, desk.project.captions.cues[0].id, 0.5);
    desk.pressAt(5, box.y);
    desk.moveTo(52, below.y);
    ASSERT_TRUE(desk.gestures.marquee());
    EXPECT_EQ(desk.selection.size(), 3u); // both zooms and the caption
    desk.moveTo(25, below.y);
    EXPECT_EQ(desk.selection.size(), 1u);
    desk.cancel();
    EXPECT_TRUE(desk.selection.empty());
    desk.selection = {desk.project.overlays[0].id};
    desk.pressAt(5, box.y);
    desk.release();
    EXPECT_TRUE(desk.selection.empty());
    EXPECT_NEAR(desk.playhead, 5, 1e-9);
    desk.doubleClick(15, desk.project.zoomEvents[0].id);
    EXPECT_THAT(desk.opened, testing::ElementsAre(desk.project.zoomEvents[0].id));
}

TEST(Gestures, whatIsUnderTheHandMayGoWhileTheButtonIsDown) {
    auto few = document();
    few.zoomEvents.clear();
    few.captions.cues.clear();
    few.overlays.clear();
    for (double const share : {0.2, 0.75}) {
        for (double const time : {10.2, 12.0, 15.0, 19.8}) {
            for (bool const isDragged : {false, true}) {
                Desk desk(document());
                desk.press(time, desk.project.zoomEvents[0].id, share);
                if (isDragged) desk.move(time + 3);
                desk.become(few);
                desk.move(time + 5);
                desk.release();
                EXPECT_TRUE(desk.gestures.isIdle());
                EXPECT_EQ(desk.project, few);
            }
        }
    }
    Desk desk(document());
    auto const head = desk.point(0, desk.project.overlays[0].id, 0.5);
    desk.pressAt(-12, head.y);
    desk.become(few);
    desk.release();
    EXPECT_EQ(desk.project, few);
}

TEST(Gestures, handsThatDoAnythingLeaveASoundDocumentAndCancelUndoes) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> times(-5, 60), ys(0, 700);
        std::uniform_int_distribution<int> dice(0, 9);
        Desk desk(RandomDocument(seed).make());
        desk.snaps = seed % 2;
        for (int i = 0; i < 12; ++i) {
            auto const before = desk.project;
            desk.keys = {
                .isShiftHeld = dice(random) == 0, .isControlHeld = dice(random) == 0, .isAltHeld = dice(random) < 2};
            desk.pressAt(times(random), ys(random));
            for (int step = dice(random); step > 0; --step) desk.moveTo(times(random), ys(random));
            if (dice(random) < 4) {
                desk.cancel();
                ASSERT_EQ(desk.project, before) << seed << " " << i;
            } else {
                desk.release();
            }
            ASSERT_TRUE(desk.gestures.isIdle());
            double end = 0;
            for (auto const& clip : desk.project.timeline.clips) {
                ASSERT_NEAR(clip.start, end, 1e-6) << seed << " " << i;
                ASSERT_GE(clip.duration, 0);
                end = clip.end();
            }
            for (auto const& zoom : desk.project.zoomEvents) {
                ASSERT_GE(zoom.start, -1e-9) << seed << " " << i;
                ASSERT_GT(zoom.duration, 0) << seed << " " << i;
                ASSERT_LE(zoom.rampIn + zoom.rampOut, zoom.duration + 1e-9) << seed << " " << i;
            }
        }
    }
}
