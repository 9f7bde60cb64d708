#include "../Editor/TestEditor.h"

#include <Tavaro/Studio/Handles/FilmHands.h>

#include <TavaroRender/Painter/FramePainter.h>

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace tavaro {

namespace {

constexpr double moment = 5;

/// A film that shows a thing of every kind at that moment; the camera stands where its settings say.
DemoProject everything() {
    DemoProject project;
    project.sourceSize = {1920, 1080};
    project.assetDurations = {{"screen.mp4", 60}, {"camera.mp4", 60}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
    project.cameraAsset = "camera.mp4";
    project.screen.padding = 0.06;
    project.zoomEvents = {{.start = 4, .duration = 4}, {.start = 4, .duration = 4, .style = ZoomStyle::loupe}};
    project.zoomEvents[0].center = {0.4, 0.6};
    project.zoomEvents[1].center = {0.75, 0.2};
    auto const overlay = [&](auto content, UnitPoint2 at) {
        project.overlays.push_back({.kind = {content}, .start = 4, .duration = 4, .position = at});
    };
    overlay(OverlayKind::Title{.text = "Welcome"}, {0.5, 0.4});
    overlay(OverlayKind::Callout{.text = "Look here"}, {0.2, 0.2});
    overlay(OverlayKind::Keycap{{"⌘", "K"}}, {0.15, 0.85});
    overlay(OverlayKind::Box{{0.3, 0.5, 0.2, 0.2}}, {});
    overlay(OverlayKind::Blur{{0.6, 0.6, 0.15, 0.1}}, {});
    overlay(OverlayKind::Arrow{{0.3, 0.3}, {0.45, 0.5}}, {});
    project.captions.isEnabled = true;
    project.captions.cues = {{.start = 4, .duration = 4, .text = "What is said"}};
    project.redactions =
        std::vector<RedactionTrack>{{.label = "Name", .end = 20, .keyframes = {{0, {0.1, 0.4, 0.1, 0.1}}}}};
    return project;
}

/// An editor with hands on the picture of that moment, without drawing any.
class FilmHandsTest : public testing::Test {
protected:
    explicit FilmHandsTest(DemoProject const& project = everything()) : editor(project) {
        editor->setPlayhead(moment);
        see();
    }

    /// Shows the picture that the hands want.
    void see() {
        auto const view = hands.view();
        painter.useZooms(view.zooms);
        painter.show(view.of(editor.document()));
        hands.see(std::make_shared<FramePlaces const>(painter.places(moment)));
    }
    std::optional<FilmThing> find(ThingKind kind, UUID const& id = {}) const {
        for (auto const& thing : hands.things()) {
            if (thing.kind == kind && (id == UUID() || thing.id == id)) return thing;
        }
        return std::nullopt;
    }
    /// A point on a thing where nothing is over it.
    UnitPoint2 pointOn(FilmThing const& thing) const {
        for (double y = 0.5; y < 1; y += 0.06) {
            for (double x = 0.1; x < 1; x += 0.05) {
                UnitPoint2 const at{thing.rect.x + x * thing.rect.width, thing.rect.y + y * thing.rect.height};
                auto const hit = hands.hit(pointer(at));
                if (hit && hit->grip == FilmGrip::body && hit->thing.isSame(thing)) return at;
            }
        }
        ADD_FAILURE() << "it is covered";
        return {};
    }
    DemoProject const& now() const { return editor.document(); }
    static FilmPointer pointer(UnitPoint2 at) { return {.at = at, .isFree = true}; }
    void drag(UnitPoint2 from, UnitPoint2 by) {
        hands.press(pointer(from));
        for (double const share : {0.3, 1.4, 1.0}) hands.move(pointer({from.x + by.x * share, from.y + by.y * share}));
        hands.release(pointer({from.x + by.x, from.y + by.y}));
        see();
    }
    void click(UnitPoint2 at, FilmHands::Select how = FilmHands::Select::only) {
        hands.press(pointer(at), how);
        hands.release(pointer(at));
        see();
    }
    std::string text() const { return encodeProject(editor.document()); }

    TestEditor editor;
    FilmHands hands{*editor.session};
    FramePainter painter{editor.project.package(), {960, 540}};
};

}

TEST_F(FilmHandsTest, everyKindOfThingFollowsTheHandInOneStepThatUndoTakesBack) {
    hands.select({.kind = ThingKind::zoom, .id = editor.document().zoomEvents[0].id});
    see();
    auto const before = text();
    int kinds = 0;
    for (auto const& thing : std::vector(hands.things())) {
        SCOPED_TRACE(nameOf(thing.kind));
        hands.select(thing);
        see();
        auto const was = *find(thing.kind, thing.id);
        UnitPoint2 const by{-0.03, -0.05};
        drag(pointOn(was), by);
        auto const after = find(thing.kind, thing.id);
        ASSERT_TRUE(after);
        EXPECT_NEAR(after->rect.x - was.rect.x, by.x, 0.002); // texts lie on whole pixels
        EXPECT_NEAR(after->rect.y - was.rect.y, by.y, 0.003);
        EXPECT_NEAR(after->rect.width, was.rect.width, 0.003);
        EXPECT_EQ(editor->undoName().left(5), "Move ");
        editor->undo();
        EXPECT_EQ(text(), before);
        see();
        ++kinds;
    }
    EXPECT_EQ(kinds, 11) << "a zoom, a redaction, two areas, a loupe, the camera, an arrow, three texts, the captions";
}

TEST_F(FilmHandsTest, everyThingIsReshapedByItsGrips) {
    auto const before = text();
    for (auto const& thing : std::vector(hands.things())) {
        SCOPED_TRACE(nameOf(thing.kind));
        hands.select(thing);
        see();
        auto const was = *find(thing.kind, thing.id);
        for (auto const& grip : gripsOf(was)) {
            drag(grip.at, {0.04, 0.05});
            auto const after = find(thing.kind, thing.id);
            ASSERT_TRUE(after);
            EXPECT_NE(after->rect, was.rect) << static_cast<int>(grip.grip);
            EXPECT_TRUE(editor->undoName().startsWith("Resize") || editor->undoName().startsWith("Aim"));
            editor->undo();
            EXPECT_EQ(text(), before);
            see();
        }
    }
}

TEST_F(FilmHandsTest, aClickSelectsWhatIsOnTopAndBesideEverythingNothing) {
    auto const box = *find(ThingKind::area, editor.document().overlays[3].id);
    auto const title = *find(ThingKind::text, editor.document().overlays[0].id);
    click(pointOn(box));
    EXPECT_EQ(editor->selection(), std::vector{box.id});
    EXPECT_EQ(editor->undoName(), "") << "nothing was edited";
    click(pointOn(title), FilmHands::Select::also);
    EXPECT_EQ(editor->selection(), (std::vector{box.id, title.id}));
    drag(pointOn(box), {0.02, 0});
    EXPECT_EQ(editor->undoName(), "Move 2 Items");
    EXPECT_NEAR(find(ThingKind::text, title.id)->rect.x - title.rect.x, 0.02, 0.002);
    click(pointOn(*find(ThingKind::text, title.id)), FilmHands::Select::also);
    EXPECT_EQ(editor->selection(), std::vector{box.id});
    click({0.01, 0.99});
    EXPECT_TRUE(editor->selection().empty());
    click(pointOn(*find(ThingKind::camera)));
    EXPECT_EQ(editor->inspector(), "camera");
    EXPECT_EQ(hands.selected().size(), 1u);
    click({0.01, 0.99});
    EXPECT_TRUE(hands.selected().empty());
}

TEST_F(FilmHandsTest, aDragThatIsTakenBackOrEndsWhereItBeganLeavesNoStep) {
    auto const before = text();
    auto const title = *find(ThingKind::text, editor.document().overlays[0].id);
    hands.press(pointer(pointOn(title)));
    hands.move(pointer({0.7, 0.7}));
    EXPECT_NE(text(), before);
    hands.cancel();
    EXPECT_EQ(text(), before);
    EXPECT_EQ(editor->undoName(), "");
    see();
    hands.press(pointer(pointOn(title)));
    hands.move(pointer({pointOn(title).x + 1.0 / 960, pointOn(title).y})); // a shaky hand
    hands.release(pointer(pointOn(title)));
    EXPECT_EQ(text(), before);
}

TEST_F(FilmHandsTest, whenSomebodyElseEditsMeanwhileTheirEditStays) {
    auto const title = *find(ThingKind::text, editor.document().overlays[0].id);
    hands.press(pointer(pointOn(title)));
    hands.move(pointer({0.6, 0.6}));
    auto const moved = editor.document().overlays[0].position;
    editor.project->edit("Theirs", [](DemoProject& project) { project.name = "Theirs"; });
    hands.move(pointer({0.9, 0.9}));
    hands.release(pointer({0.9, 0.9}));
    EXPECT_EQ(editor.document().name, "Theirs");
    EXPECT_EQ(editor.document().overlays[0].position, moved);
}

TEST_F(FilmHandsTest, keysMoveAndResizeWhatIsSelectedAsOneStepUntilTheyRest) {
    EXPECT_FALSE(hands.nudge(1, 0)) << "nothing is selected";
    auto const id = now().overlays[0].id;
    hands.select(*find(ThingKind::text, id));
    auto const x = now().overlays[0].position.x;
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(hands.nudge(1, 0));
    EXPECT_NEAR(now().overlays[0].position.x, x + 5.0 / 1920, 1e-9);
    hands.rest();
    EXPECT_TRUE(hands.nudge(0, 6)) << "before there is a new picture";
    hands.rest();
    EXPECT_NEAR(now().overlays[0].position.x, x + 5.0 / 1920, 1e-9);
    editor->undo();
    see();
    auto const font = now().overlays[0].fontSize;
    EXPECT_TRUE(hands.grow(1.1));
    hands.rest();
    EXPECT_NEAR(now().overlays[0].fontSize, 1.1 * font, 1e-9);
    editor->undo();
    EXPECT_EQ(now().overlays[0].fontSize, font);
    editor->undo();
    EXPECT_EQ(now().overlays[0].position, (UnitPoint2{0.5, 0.4}));
    EXPECT_EQ(editor->undoName(), "");
}

TEST_F(FilmHandsTest, theCameraGoesToTheNamedPlaceThatCatchesItAndItsMoveIsTheOneInForce) {
    auto const camera = *find(ThingKind::camera);
    auto const from = camera.rect.center();
    auto const placements = painter.places(moment).camera->placements;
    auto const goal = placements[static_cast<std::size_t>(CameraPlacement::topLeft)].center();
    hands.press({.at = from});
    hands.move({.at = {goal.x + 0.01, goal.y + 0.01}});
    hands.release({.at = goal});
    EXPECT_EQ(editor.document().camera.placement, CameraPlacement::topLeft);
    EXPECT_FALSE(editor.document().camera.position);
    see();
    editor->edit("Add", [](DemoProject& project) { project.cameraMoves = {{.time = 2}, {.time = 9}}; });
    see();
    drag(pointOn(*find(ThingKind::camera)), {-0.2, -0.3});
    EXPECT_EQ(editor.document().camera.placement, CameraPlacement::topLeft);
    EXPECT_TRUE(editor.document().cameraMoves[0].position);
    EXPECT_FALSE(editor.document().cameraMoves[1].position);
    EXPECT_EQ(editor->selection(), std::vector{editor.document().cameraMoves[0].id});
}

TEST_F(FilmHandsTest, anAreaIsDrawnToBeHiddenAndTheCropIsDragged) {
    hands.take(FilmTool::hide);
    drag({0.3, 0.3}, {0.2, 0.1});
    EXPECT_EQ(editor->undoName(), "Hide Area");
    ASSERT_EQ(editor.document().redactions->size(), 2u);
    EXPECT_EQ(hands.tool(), FilmTool::select);
    auto const made = *find(ThingKind::redaction, editor.document().redactions->back().id);
    EXPECT_EQ(editor->selection(), std::vector{made.id});
    EXPECT_NEAR(made.rect.x, 0.3, 1e-6);
    EXPECT_NEAR(made.rect.maxY(), 0.4, 1e-6);
    auto const& clip = editor.document().timeline.clips.front();
    EXPECT_EQ(editor.document().redactions->back().end, clip.sourceStart + clip.sourceSpan())
        << "what is hidden stays so until somebody says otherwise";

    hands.take(FilmTool::crop);
    see();
    auto const whole = find(ThingKind::crop)->rect;
    ASSERT_EQ(hands.things().size(), 1u);
    drag({whole.x, whole.y}, {whole.width / 4, whole.height / 4});
    auto const crop = editor.document().sourceCrop.value_or(NormalizedRect{});
    EXPECT_NEAR(crop.x, 0.25, 1e-6);
    EXPECT_NEAR(crop.maxY(), 1, 1e-6);
    EXPECT_EQ(painter.places(moment).crop, (NormalizedRect{0, 0, 1, 1})) << "what is left out is still seen";
    hands.clearCrop();
    EXPECT_FALSE(editor.document().sourceCrop);
}

TEST_F(FilmHandsTest, aHiddenAreaThatMovesIsMovedAtThatMomentAloneAndOneThatStaysAsAWhole) {
    auto const track = [&]() -> RedactionTrack const& { return editor.document().redactions->front(); };
    auto const id = track().id;
    hands.select({.kind = ThingKind::redaction, .id = id});
    auto const first = track().keyframes.front().rect;
    drag(pointOn(*find(ThingKind::redaction)), {0.1, 0});
    ASSERT_EQ(track().keyframes.size(), 1u);
    EXPECT_GT(track().keyframes.front().rect.x, first.x + 0.05);
    editor->undo();

    EXPECT_FALSE(editor.isEnabled("removeKeyframe"));
    editor->setPlayhead(2);
    editor.run("addKeyframe");
    EXPECT_FALSE(editor.isEnabled("addKeyframe")) << "there is one now";
    editor->setPlayhead(moment);
    see();
    auto const shown = find(ThingKind::redaction)->rect;
    drag(pointOn(*find(ThingKind::redaction)), {0.1, 0.05});
    ASSERT_EQ(track().keyframes.size(), 3u);
    EXPECT_EQ(track().areaAt(0), first);
    EXPECT_EQ(track().areaAt(2), first);
    EXPECT_EQ(track().keyframes.back().t, moment);
    EXPECT_NEAR(find(ThingKind::redaction)->rect.x, shown.x + 0.1, 1e-9)
        << "it is held where it is, not where it came by";
    hands.nudge(8, 0);
    hands.rest();
    EXPECT_EQ(track().keyframes.size(), 3u) << "the same keyframe";
    EXPECT_GT(track().areaAt(3).x, first.x) << "it is on its way";

    editor->setPlayhead(6);
    editor->jump(false);
    EXPECT_NEAR(editor->playhead(), moment, 1e-9) << "keyframes of what is selected are edges";
    editor.run("removeKeyframe");
    EXPECT_EQ(track().areaAt(moment), first);
    while (editor.project->undoName()) editor->undo();
    EXPECT_EQ(track().keyframes.size(), 1u);
}

TEST_F(FilmHandsTest, aFindingThatWasFollowedIsMovedAndReshapedAsAWhole) {
    auto const track = [&]() -> RedactionTrack const& { return editor.document().redactions->front(); };
    auto const keyframes = [&] { return track().keyframes; };
    editor->edit("Found", [&](DemoProject& project) {
        auto& found = project.redactions.edit().front();
        found.textHash = "1";
        found.isAutomatic = true;
        found.keyframes.clear();
        for (int i = 0; i <= 40; ++i) found.keyframes.push_back({i / 4.0, {0.1 + i * 0.02, 0.4, 0.1, 0.1}});
    });
    see();
    hands.select({.kind = ThingKind::redaction, .id = track().id});
    auto const before = keyframes();
    auto const was = find(ThingKind::redaction)->rect;
    drag(pointOn(*find(ThingKind::redaction)), {0, 0.1});
    EXPECT_NEAR(find(ThingKind::redaction)->rect.y, was.y + 0.1, 1e-9);
    ASSERT_EQ(track().keyframes.size(), before.size());
    double const by = track().keyframes[0].rect.y - before[0].rect.y;
    EXPECT_GT(by, 0.05);
    for (std::size_t i = 0; i < before.size(); ++i) {
        auto const &now = track().keyframes[i].rect, &then = before[i].rect;
        EXPECT_NEAR(now.y - then.y, by, 1e-9) << i;
        EXPECT_NEAR(now.height, then.height, 1e-9) << i;
        EXPECT_LE(now.maxX(), 1 + 1e-9) << i;
    }
    EXPECT_FALSE(track().isAutomatic);
    EXPECT_FALSE(editor.isEnabled("addKeyframe")) << "its keyframes are the scan's";
    see();
    auto const moved = keyframes();
    auto const grip = gripsOf(*find(ThingKind::redaction)).back();
    drag(grip.at, {0.03, 0.05});
    EXPECT_NE(track().keyframes.front().rect, moved.front().rect);
    EXPECT_NE(track().keyframes.back().rect, moved.back().rect);
    EXPECT_TRUE(editor->undoName().startsWith("Resize"));
}

TEST_F(FilmHandsTest, whatWasRejectedIsSeenWhileItIsSelected) {
    auto const id = editor.document().redactions->front().id;
    auto const shown = find(ThingKind::redaction)->rect;
    editor->edit("Reject", [&](DemoProject& project) { project.redactions.edit().front().isEnabled = false; });
    see();
    EXPECT_FALSE(find(ThingKind::redaction)) << "nothing is hidden there";
    editor->select(std::vector{id});
    see();
    auto const thing = find(ThingKind::redaction, id);
    ASSERT_TRUE(thing);
    EXPECT_TRUE(thing->isRejected);
    EXPECT_TRUE(gripsOf(*thing).empty()) << "which would be over the text";
    EXPECT_NEAR(thing->rect.x, shown.x, 1e-6);
    EXPECT_NEAR(thing->rect.maxY(), shown.maxY(), 1e-6);
    editor->clearSelection();
    see();
    EXPECT_FALSE(find(ThingKind::redaction));
}

TEST_F(FilmHandsTest, theDividerOfASplitScreenIsDraggedAlongItsWay) {
    for (std::size_t i = 0; i < namesOf(SplitArrangement{}).size(); ++i) {
        auto const arrangement = static_cast<SplitArrangement>(i);
        SCOPED_TRACE(nameOf(arrangement));
        editor->edit("Split", [&](DemoProject& project) {
            project.layout.content = CanvasLayout::Split{arrangement, 0.4};
        });
        see();
        auto const share = [&] {
            return std::get<CanvasLayout::Split>(editor.document().layout.content).cameraFraction;
        };
        auto const was = find(ThingKind::divider)->rect;
        EXPECT_EQ(find(ThingKind::divider)->isUpright(), was.height > was.width);
        drag(pointOn(*find(ThingKind::divider)), {0.12, 0.12});
        EXPECT_EQ(editor->undoName(), "Move Divider");
        auto const now = find(ThingKind::divider)->rect;
        EXPECT_NEAR(now.center().x - was.center().x, was.height > was.width ? 0.12 : 0, 1e-6);
        EXPECT_NEAR(now.center().y - was.center().y, was.height > was.width ? 0 : 0.12, 1e-6);
        drag(pointOn(*find(ThingKind::divider)), {3, 3});
        EXPECT_TRUE(share() == 0.1 || share() == 0.9) << "both panes stay, " << share();
        editor->undo(), editor->undo(), editor->undo();
        see();
    }
}

TEST_F(FilmHandsTest, aFilmThatIsSplitForAWhileOnlyStillBeginsAsItDoesWhenTheDividerIsMoved) {
    editor->edit("Split",
                 [](DemoProject& project) { project.layoutCues = {{.time = 3, .scene = SceneLayout::split}}; });
    see();
    auto const begins = painter.places(1);
    drag(pointOn(*find(ThingKind::divider)), {-0.1, 0});
    EXPECT_TRUE(editor.document().layout.isSplit());
    EXPECT_EQ(painter.places(1).camera, begins.camera);
    EXPECT_EQ(painter.places(1).content, begins.content);
    EXPECT_EQ(editor.document().layoutCues.size(), 2u);
    drag(pointOn(*find(ThingKind::divider)), {-0.1, 0});
    EXPECT_EQ(editor.document().layoutCues.size(), 2u);
    editor->undo(), editor->undo();
    EXPECT_FALSE(editor.document().layout.isSplit());
}

TEST_F(FilmHandsTest, aSelectedZoomIsSeenAsAFrameOnTheWholePicture) {
    EXPECT_EQ(hands.view(), FilmView{});
    auto const id = now().zoomEvents[0].id;
    editor->select(std::vector{id});
    see();
    EXPECT_EQ(hands.view().zooms, ZoomUse::unzoomed);
    auto const frame = *find(ThingKind::zoom, id);
    auto const corner = gripsOf(frame)[0].at;
    drag(corner, {frame.rect.width / 4, frame.rect.height / 4});
    EXPECT_NEAR(now().zoomEvents[0].scale, 1.6 / 0.75, 1e-6);
    EXPECT_FALSE(now().zoomEvents[0].followsCursor);
    editor->setPlayhead(1);
    EXPECT_EQ(hands.view(), FilmView{}) << "the zoom is elsewhere";
}

TEST_F(FilmHandsTest, aTextIsReadAndChangedAndSaidByItsName) {
    auto const title = *find(ThingKind::text, editor.document().overlays[0].id);
    EXPECT_TRUE(describe(editor.document(), title).starts_with("Title “Welcome”, at 50 %, 40 %"));
    EXPECT_EQ(textOf(editor.document(), title), "Welcome");
    EXPECT_EQ(textOf(editor.document(), *find(ThingKind::caption)), "What is said");
    EXPECT_FALSE(textOf(editor.document(), *find(ThingKind::camera)));
    editor->edit("Edit Text", [&](DemoProject& project) { setText(project, title, "Hello"); });
    EXPECT_EQ(std::get<OverlayKind::Title>(editor.document().overlays[0].kind.content).text, "Hello");
}

TEST_F(FilmHandsTest, whateverHandsDoUndoLeadsBackToWhereTheyBegan) {
    std::mt19937 random(11);
    auto const chance = [&] { return std::uniform_real_distribution(0.0, 1.0)(random); };
    auto const before = text();
    int edits = 0;
    for (int i = 0; i < 150; ++i) {
        SCOPED_TRACE(i);
        auto const& things = hands.things();
        auto const thing =
            things.empty() ? FilmThing{}
                           : things[static_cast<std::size_t>(chance() * 0.999 * static_cast<double>(things.size()))];
        auto const grips = gripsOf(thing);
        auto const from = i % 3 == 0 ? grips[static_cast<std::size_t>(i) % grips.size()].at : thing.rect.center();
        if (i % 20 == 19) hands.take(static_cast<FilmTool>(i / 20 % 3));
        if (i % 7 == 6) hands.nudge(chance() * 40 - 20, 3);
        if (i % 11 == 10) hands.grow(0.8 + chance() / 2);
        auto const revision = editor.project->revision();
        drag(from, {chance() - 0.5, chance() - 0.5});
        edits += editor.project->revision() != revision;
        EXPECT_TRUE(decodeProject(text()) == editor.document()) << "every number can be stored";
        EXPECT_GT(editor.document().effectiveCrop().area(), 0.001);
    }
    EXPECT_GT(edits, 60);
    EXPECT_EQ(editor.told, std::vector<std::string>());
    while (editor.project->undoName()) editor->undo();
    EXPECT_EQ(text(), before);
}

}
