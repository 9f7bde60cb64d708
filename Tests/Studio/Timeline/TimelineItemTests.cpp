#include <Tavaro/Studio/Timeline/IntentEdits.h>
#include <Tavaro/Studio/Timeline/TimelineAccessibility.h>
#include <Tavaro/Studio/Timeline/TimelineItem.h>
#include <Tavaro/Studio/Timeline/TimelineSteps.h>

#include <TavaroCore/Project/DemoProject.h>

#include <Tests/Media/Audio/TestSounds.h>
#include <Tests/Render/Export/TestTake.h>

#include <gmock/gmock.h>

#include <QAccessible>
#include <QImage>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTest>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>

using namespace tavaro;

namespace {

/// A timeline in a window without a display, drawn by Qt's software renderer.
class Stage {
public:
    explicit Stage(int width = 1280, int height = 560) {
        static bool const isSoftware = [] {
            QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
            return true;
        }();
        (void)isSoftware;
        window = std::make_unique<QQuickWindow>();
        window->resize(width, height);
        item = new TimelineItem(window->contentItem());
        item->setSize(QSizeF(width, height));
        item->onIntent([this](TimelineIntent const& intent) {
            intents.push_back(intent);
            if (auto const* select = std::get_if<timelineIntents::Select>(&intent)) item->setSelection(select->ids);
        });
        window->show();
    }
    QImage picture() {
        auto picture = window->grabWindow();
        picture.setDevicePixelRatio(static_cast<double>(picture.width()) / window->width());
        return picture;
    }
    /// Waits for what is drawn beside the main thread.
    template<class Condition> bool waitFor(Condition condition) { return QTest::qWaitFor(condition, 20'000); }

    QPoint middleOf(UUID const& id) const {
        auto const box = item->layout().box(item->view(), *item->layout().find(id));
        return QPointF(box.x + box.width / 2, box.y + box.height * 0.75).toPoint();
    }

    std::unique_ptr<QQuickWindow> window;
    TimelineItem* item = nullptr; // the window's
    std::vector<TimelineIntent> intents;
};

/// Half a minute with something on every lane.
DemoProject everything(DemoProject project) {
    auto& clips = project.timeline.clips;
    project.assetDurations["screen.mp4"] = 3;
    clips = {{.asset = "screen.mp4", .start = 0, .duration = 3},
             {.asset = "screen.mp4", .start = 3, .duration = 6, .speed = 0.5},
             {.asset = "screen.mp4", .start = 9, .sourceStart = 1, .duration = 4, .speed = 0},
             {.asset = "screen.mp4", .start = 13, .duration = 1.5, .speed = 2, .isMuted = true},
             {.asset = "screen.mp4", .start = 14.5, .duration = 9.5, .speed = 0.25}};
    project.intro = TitleCard{.text = "Welcome"};
    project.outro = TitleCard{.text = "Thanks for watching", .duration = 2};
    project.zoomEvents = {{.start = 1, .duration = 3, .scale = 1.8},
                          {.start = 5, .duration = 4, .rampIn = 1, .rampOut = 0.8, .scale = 2.4},
                          {.start = 7, .duration = 3, .style = ZoomStyle::loupe},
                          {.start = 12, .duration = 6, .scale = 1.35},
                          {.start = 19, .duration = 4, .scale = 3}};
    project.overlays = {{.kind = {OverlayKind::Title{"Open the settings", ""}}, .start = 0.5, .duration = 3},
                        {.kind = {OverlayKind::Keycap{{"⌘", "K"}}}, .start = 4.5, .duration = 1.5},
                        {.kind = {OverlayKind::Arrow{}}, .start = 8, .duration = 3},
                        {.kind = {OverlayKind::Callout{"Everything is saved at once"}}, .start = 13, .duration = 4},
                        {.kind = {OverlayKind::Blur{}}, .start = 18, .duration = 5}};
    double start = 0;
    for (auto const* text : {"This is how a project begins.", "Click here,", "and then choose a background.",
                             "That was it.", "Now we export the film", "for everybody to see."}) {
        project.captions.cues.push_back({.start = start, .duration = 3.6, .text = text});
        start += 4;
    }
    project.layoutCues = {{.time = 0, .scene = SceneLayout::overlay},
                          {.time = 8, .scene = SceneLayout::split},
                          {.time = 16, .scene = SceneLayout::cameraOnly}};
    project.cameraMoves = {{.time = 4}, {.time = 12}};
    AudioTrack voice{.role = AudioRole::microphone}, music{.role = AudioRole::music, .gain = 0.6};
    voice.clips = {{.asset = "voice.caf", .start = 0, .duration = 13},
                   {.asset = "voice.caf", .start = 14.5, .sourceStart = 13, .duration = 9.5}};
    music.clips = {{.asset = "music.caf", .start = 0, .duration = 24}};
    project.audioTracks = {voice, music};
    project.silences = {{.start = 6, .duration = 1.2, .isRemoved = true}, {.start = 20, .duration = 2}};
    project.voiceover.emplace().segments = {{.text = "A voice that was made later",
                                             .audioAsset = "line.caf",
                                             .audioDuration = 3,
                                             .start = 9,
                                             .isDirty = false},
                                            {.text = "A line that nobody said yet", .start = 14}};
    project.redactions.edit() = {{.kind = SensitiveKind::email, .label = "E-mail address", .start = 1, .end = 1.5}};
    return project;
}

/// A film of that many hours: as many things a minute, however long.
DemoProject longFilm(double hours) {
    DemoProject project;
    project.assetDurations["screen.mp4"] = hours * 3600;
    auto const zooms = static_cast<int>(5000 * hours / 3), clips = static_cast<int>(200 * hours / 3);
    double const seconds = hours * 3600;
    for (int i = 0; i < clips; ++i) {
        project.timeline.clips.push_back({.asset = "screen.mp4",
                                          .start = seconds * i / clips,
                                          .sourceStart = seconds * i / clips,
                                          .duration = seconds / clips});
    }
    for (int i = 0; i < zooms; ++i) {
        project.zoomEvents.push_back({.start = seconds * i / zooms, .duration = 1.6});
        project.captions.cues.push_back(
            {.start = seconds * i / zooms, .duration = 2, .text = "caption " + std::to_string(i)});
    }
    return project;
}

/// At a point of the window.
QColor colorAt(QImage const& picture, double x, double y) {
    return picture.pixelColor((QPointF(x, y) * picture.devicePixelRatio()).toPoint());
}

std::size_t partsOf(TimelineDrawing const& drawing) {
    std::size_t parts = 0;
    for (auto const& layer : drawing.layers) parts += layer.rects.size() + layer.pictures.size();
    return parts;
}

bool isNear(QColor const& a, QColor const& b, int by = 12) {
    return std::abs(a.red() - b.red()) <= by && std::abs(a.green() - b.green()) <= by &&
           std::abs(a.blue() - b.blue()) <= by;
}

/// Anything that a hand may ask for of the items that there are, and of some that there are not.
TimelineIntent intentAtRandom(DemoProject const& project, std::mt19937& random) {
    using namespace timelineIntents;
    std::vector<UUID> ids{UUID::random()};
    forEachEditedList(project, [&](auto const& items) {
        for (auto const& item : items) ids.push_back(item.id);
    });
    for (auto const& cue : project.layoutCues) ids.push_back(cue.id);
    auto const trimmed = ids[random() % ids.size()]; // no clip: what is beside a trimmed one gets new identities
    for (auto const& clip : project.timeline.clips) ids.push_back(clip.id);
    auto const any = [&] { return ids[random() % ids.size()]; };
    double const seconds = static_cast<double>(random() % 80) / 8 - 3;
    auto const edge = random() % 2 ? ClipEdge::leading : ClipEdge::trailing;
    switch (random() % 5) {
    case 0: return TrimItem{trimmed, edge, seconds + 4};
    case 1: return SetRamp{any(), edge, seconds};
    case 2: return MoveItems{{any(), any(), any()}, seconds};
    default: return MoveItems{{any()}, seconds};
    }
}

/// Whether lanes that followed edits are those of the document.
bool areLanesOf(TimelineLayout const& layout, DemoProject const& project) {
    TimelineLayout anew;
    anew.show(project);
    return std::ranges::equal(layout.lanes(), anew.lanes(), [](Lane const& a, Lane const& b) {
        return a.kind == b.kind && a.index.rowCount() == b.index.rowCount() &&
               std::ranges::equal(a.index.items(), b.index.items());
    });
}

}

// With TAVARO_PICTURES set to a folder, the pictures are left there to be looked at.
TEST(TimelineItem, theMarkedSpanIsSeenOnTheRulerAndNothingWithoutOne) {
    Stage stage;
    auto const project = everything({});
    stage.item->show(project);
    auto const selection = TimelinePalette::dark().selection;
    auto const isMarked = [&](double time) {
        auto const picture = stage.picture();
        return colorAt(picture, stage.item->view().x(time), TimelineView::rulerHeight - 2.5) == selection;
    };
    EXPECT_FALSE(isMarked(7.03));
    stage.item->setRange({5, 4});
    EXPECT_TRUE(isMarked(7.03));
    EXPECT_FALSE(isMarked(4.53));
    EXPECT_FALSE(isMarked(9.53));
    stage.item->setRange({});
    EXPECT_FALSE(isMarked(7.03));
}

TEST(TimelineItem, everyItemIsDrawnWhereItIsInItsColour) {
    TestTake take("timeline");
    writeSound(take.package.assetURL("voice.caf"), syllables(24));
    writeSound(take.package.assetURL("music.caf"), noise(24, 0.3));
    auto const project = everything(take.project);
    for (bool const isDark : {true, false}) {
        Stage stage(1280, 600);
        auto const palette = isDark ? TimelinePalette::dark() : TimelinePalette::light();
        stage.item->setPalette(palette);
        stage.item->setMedia([&](std::string const& asset) { return take.package.assetURL(asset); },
                             PeakFolder(take.folder / "cache"));
        stage.item->show(project);
        stage.item->setPlayhead(10.4);
        stage.item->setSelection({project.zoomEvents[1].id});
        auto picture = stage.picture();
        ASSERT_GE(picture.width(), 1280);

        auto const& view = stage.item->view();
        for (auto const& lane : stage.item->layout().lanes()) {
            if (lane.kind == LaneKind::sound || lane.kind == LaneKind::film) continue;
            for (auto const& item : lane.index.items()) {
                if (item.kind == LaneItemKind::silence || item.id == project.zoomEvents[1].id ||
                    item.kind == LaneItemKind::cameraMove)
                    continue;
                auto const box = stage.item->layout().box(view, *stage.item->layout().find(item.id));
                auto const color = colorAt(picture, box.x + box.width / 2, box.bottom() - 3);
                bool const isPale = item.id == project.voiceover->segments[1].id; // it is not spoken yet
                EXPECT_EQ(isNear(color, palette.of(item.kind).fill), !isPale)
                    << lane.key << " " << box.x << " " << color.name().toStdString();
            }
        }
        EXPECT_TRUE(isNear(colorAt(picture, view.x(10.4), 590), palette.playhead, 40));

        // Stills and waveforms come by themselves.
        auto const clip = stage.item->layout().box(view, *stage.item->layout().find(project.timeline.clips[4].id));
        auto const sound =
            stage.item->layout().box(view, *stage.item->layout().find(project.audioTracks[0].clips[0].id));
        auto const isThere = [&] {
            picture = stage.picture();
            auto const still = colorAt(picture, clip.x + 60, clip.bottom() - 12);
            int waves = 0;
            for (int x = static_cast<int>(sound.x) + 4; x < sound.right() - 4; ++x) {
                waves += isNear(colorAt(picture, x, sound.y + 22), palette.of(LaneItemKind::audioClip).wave, 60);
            }
            return !isNear(still, palette.of(LaneItemKind::clip).fill, 8) && waves > 20;
        };
        EXPECT_TRUE(stage.waitFor(isThere));
        if (auto const* folder = std::getenv("TAVARO_PICTURES")) {
            QTest::qWait(400);
            picture = stage.picture();
            picture.save(QString::fromLocal8Bit(folder) + (isDark ? "/timeline-dark.png" : "/timeline-light.png"));
        }
    }
}

TEST(TimelineItem, whatComesLaterIsDrawnBesideWhatWasThere) {
    DemoProject few = longFilm(0.01), many = few;
    for (int i = 0; i < 6; ++i) many.zoomEvents.push_back({.start = 4.0 * i, .duration = 2});
    Stage before, fresh;
    for (auto* stage : {&before, &fresh}) stage->item->setPosition(QPointF(40, 30));
    before.item->show(few);
    before.picture();
    before.item->show(many);
    fresh.item->show(many);
    EXPECT_EQ(before.picture(), fresh.picture());
}

TEST(TimelineItem, whatIsDrawnDoesNotGrowWithTheFilm) {
    auto const half = longFilm(0.5), three = longFilm(3);
    Stage stage(1600, 400);
    std::size_t parts[2];
    for (int i = 0; auto const* film : {&half, &three}) {
        stage.item->show(*film);
        stage.item->setView(600, 0.05);
        parts[i++] = partsOf(stage.item->drawing());
        EXPECT_LT(partsOf(stage.item->drawing()), 1500u);
        stage.item->fit();
        EXPECT_LT(partsOf(stage.item->drawing()), 5000u) << "thousands of items in view are blocks";
    }
    EXPECT_NEAR(static_cast<double>(parts[1]), static_cast<double>(parts[0]), 0.1 * static_cast<double>(parts[0]));
}

TEST(TimelineItem, theMouseTheWheelAndTheKeysReachIt) {
    TestTake const take("timeline");
    auto const project = everything(take.project);
    Stage stage;
    stage.item->show(project);
    auto const zoom = project.zoomEvents[0].id;
    QTest::mouseClick(stage.window.get(), Qt::LeftButton, {}, stage.middleOf(zoom));
    EXPECT_THAT(stage.item->selection(), testing::ElementsAre(zoom));
    auto const from = stage.middleOf(zoom);
    QTest::mousePress(stage.window.get(), Qt::LeftButton, {}, from);
    QTest::mouseMove(stage.window.get(), from + QPoint(20, 0));
    QTest::mouseMove(stage.window.get(), from + QPoint(40, 0));
    stage.intents.clear();
    QTest::keyClick(stage.window.get(), Qt::Key_Escape);
    ASSERT_FALSE(stage.intents.empty());
    EXPECT_TRUE(std::holds_alternative<timelineIntents::EditCancelled>(stage.intents.front()));
    QTest::mouseRelease(stage.window.get(), Qt::LeftButton, {}, from + QPoint(40, 0));

    auto const scale = stage.item->view().secondsPerPoint();
    QTest::keyClick(stage.window.get(), Qt::Key_Plus);
    EXPECT_LT(stage.item->view().secondsPerPoint(), scale);
    auto const under = stage.item->view().time(700);
    QWheelEvent wheel(QPointF(700, 100), QPointF(700, 100), {}, QPoint(0, 120), Qt::NoButton, Qt::ControlModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(stage.window.get(), &wheel);
    EXPECT_NEAR(stage.item->view().time(700), under, 1e-6);
    EXPECT_FALSE(stage.item->fits());
    QTest::keyClick(stage.window.get(), Qt::Key_Z, Qt::ShiftModifier);
    EXPECT_TRUE(stage.item->fits());
    stage.item->showNothing();
    EXPECT_FALSE(stage.picture().isNull());
}

TEST(TimelineItem, whatIsInViewIsInTheAccessibilityTree) {
    installTimelineAccessibility();
    TestTake const take("timeline");
    auto const project = everything(take.project);
    Stage stage;
    stage.item->show(project);
    auto* tree = QAccessible::queryAccessibleInterface(stage.item);
    ASSERT_TRUE(tree);
    QStringList names;
    QAccessibleInterface* zoom = nullptr;
    for (int i = 0; i < tree->childCount(); ++i) {
        auto* child = tree->child(i);
        names << child->text(QAccessible::Name);
        EXPECT_TRUE(child->isValid());
        EXPECT_EQ(tree->indexOfChild(child), i);
        EXPECT_FALSE(child->rect().isEmpty() && child->role() != QAccessible::ListItem);
        if (names.back() == "Zoom 1.8×, 0:01 to 0:04") zoom = child;
    }
    EXPECT_TRUE(names.contains("Clip screen, 0.5×, 0:03 to 0:09")) << names.join("; ").toStdString();
    EXPECT_TRUE(names.contains("Overlay ⌘ K, 0:04 to 0:06"));
    EXPECT_TRUE(names.contains("Scene Split, 0:08 to 0:16"));
    ASSERT_TRUE(zoom);
    EXPECT_EQ(tree->childAt(zoom->rect().center().x(), zoom->rect().center().y() + 4), zoom);
    zoom->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(zoom->state().selected);
    stage.intents.clear();
    zoom->actionInterface()->doAction(QAccessibleActionInterface::increaseAction());
    ASSERT_EQ(stage.intents.size(), 3u);
    EXPECT_NEAR(std::get<timelineIntents::MoveItems>(stage.intents[1]).by, 1.0 / 60, 1e-9);
    stage.item->setView(3, 0.002);
    for (int i = 0; i < tree->childCount(); ++i) {
        auto const place = tree->child(i)->rect();
        EXPECT_TRUE(place.isEmpty() || (place.left() >= tree->rect().left() && place.right() <= tree->rect().right()))
            << "of what is longer than the view, what shows";
    }
    auto changed = project;
    changed.zoomEvents.clear();
    stage.item->show(changed);
    EXPECT_FALSE(zoom->isValid()) << "what is gone says so";
}

TEST(TimelineSteps, aDragIsOneStepATakenBackOneNoneAndSomebodyElsesEditEndsIt) {
    using namespace timelineIntents;
    TestTake const take("timeline");
    auto const project = everything(take.project);
    take.package.save(project);
    OpenProject open(take.package.url());
    TimelineSteps steps(open);
    auto const id = project.zoomEvents[0].id;
    auto const drag = [&](double by) { steps.take(MoveItems{{id}, by}); };
    auto const start = [&] { return open.document().zoomEvents[0].start; };
    steps.take(EditBegan{"Move Zoom"});
    for (double const by : {0.1, 0.9, 0.5}) drag(by);
    steps.take(EditEnded{});
    EXPECT_DOUBLE_EQ(start(), 1.5);
    EXPECT_EQ(open.undoName(), "Move Zoom");
    ASSERT_TRUE(open.undo());
    EXPECT_EQ(open.document(), project);
    EXPECT_FALSE(open.undoName());

    steps.take(EditBegan{"Move Zoom"});
    drag(2);
    steps.take(EditCancelled{});
    EXPECT_EQ(open.document(), project);
    EXPECT_FALSE(open.undoName()) << "nothing is left of it to be undone";

    steps.take(EditBegan{"Move Zoom"});
    drag(2);
    open.edit("Rename", [](DemoProject& other) { other.name = "theirs"; });
    drag(5);
    steps.take(EditEnded{});
    EXPECT_DOUBLE_EQ(start(), 3);
    EXPECT_EQ(open.document().name, "theirs");
}

TEST(TimelineSteps, aDragOfItemsLeavesWhatItWouldOnTheWholeDocument) {
    using namespace timelineIntents;
    TestTake const take("dragged");
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        auto project = everything(take.project);
        std::ranges::stable_sort(project.layoutCues, {}, &LayoutCue::time);
        take.package.save(project);
        OpenProject open(take.package.url());
        TimelineSteps steps(open);
        TimelineLayout layout;
        layout.show(open.document());
        auto const observation = open.observe(
            [&](ProjectChange const& change) { layout.show(open.document(), change.fields, change.items); });
        for (int drag = 0; drag < 6; ++drag) {
            auto const before = open.document();
            auto const intent = intentAtRandom(before, random);
            steps.take(EditBegan{"Drag"});
            for (int i = 0; i < 3; ++i) {
                // Mostly one thing further and further; now and then another.
                auto next = random() % 5 ? intent : intentAtRandom(before, random);
                if (auto* move = std::get_if<MoveItems>(&next)) move->by += i * 0.3;
                steps.take(next);
                auto expected = before;
                carryOut(next, expected);
                ASSERT_EQ(encodeProject(open.document()), encodeProject(expected));
                ASSERT_TRUE(areLanesOf(layout, open.document()));
            }
            bool const isCancelled = random() % 3 == 0;
            if (isCancelled)
                steps.take(EditCancelled{});
            else
                steps.take(EditEnded{});
            if (isCancelled) {
                ASSERT_EQ(encodeProject(open.document()), encodeProject(before));
            }
            if (random() % 2) open.undo();
            ASSERT_TRUE(areLanesOf(layout, open.document()));
        }
        while (open.undo()) {
        }
        ASSERT_EQ(encodeProject(open.document()), encodeProject(project));
    }
}
