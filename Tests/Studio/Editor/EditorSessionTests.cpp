#include "TestEditor.h"

#include <Tavaro/Model/Project/OpenProjects.h>
#include <Tavaro/Studio/Editor/EditorCommands.h>
#include <Tavaro/Studio/Editor/StepList.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <TavaroCore/Editing/TimelineEdits.h>

#include <QAbstractItemModelTester>

#include <algorithm>
#include <fstream>

using namespace tavaro;

namespace {

QString textOf(UUID const& id) { return QString::fromStdString(id.text()); }

void actAtRandom(TestEditor& editor, RandomDocument& random) {
    auto const& document = editor.document();
    switch (random.below(8)) {
    case 0: editor->setPlayhead(random.time(0, std::max(document.duration(), 1.0))); break;
    case 1: {
        std::vector<UUID> some;
        forEachItem(document, [&](auto const& item) {
            if (random.below(6) == 0) some.push_back(item.id);
        });
        editor->select(some, static_cast<EditorSession::Select>(random.below(3)));
        break;
    }
    case 2: editor->setRange(random.time(0, 4), random.time(0, 2)); break;
    case 3:
        if (editor->selection().empty()) break;
        editor->beginDrag(textOf(editor->selection()[0]));
        for (int i = 0; i < 3; ++i) {
            if (random.below(2))
                editor->dragItems(random.time(-2, 2), 8);
            else
                editor->dragEdge(random.below(2) == 0, random.time(0, 8), 8);
        }
        if (random.below(4) == 0)
            editor->cancelDrag();
        else
            editor->endDrag();
        break;
    case 4:
        if (!document.timeline.clips.empty())
            editor->moveClip(textOf(document.timeline.clips[0].id), random.time(0, 8));
        break;
    default: {
        auto const& commands = editor->commands();
        auto const& command = commands[static_cast<std::size_t>(random.below(static_cast<int>(commands.size())))];
        if (command->name() != QStringLiteral("polish")) command->trigger();
    }
    }
}

/// What holds at any time.
void expectSound(TestEditor const& editor) {
    auto const& document = editor.document();
    EXPECT_GE(editor->playhead(), 0);
    EXPECT_LE(editor->playhead(), document.duration());
    EXPECT_LE(editor->range().end(), document.duration() + 1e-9);
    for (auto const& id : editor->selection()) EXPECT_TRUE(visitItem(document, id, [](auto const&) {}));
    std::set<UUID> identities;
    forEachItem(document,
                [&](auto const& item) { EXPECT_TRUE(identities.insert(item.id).second) << nameOf(kindOf(item)); });
    for (auto const& listed : editorCommands())
        EXPECT_EQ(editor.isEnabled(listed.name), listed.isPossible(*editor.session)) << listed.name;
}

}

TEST(EditorSession, actionsOfChanceUndoneToTheBottomGiveTheDocumentByteForByte) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        RandomDocument random(seed);
        TestEditor editor(fullDocument(random));
        StepList steps(*editor.session);
        QAbstractItemModelTester const tester(&steps, QAbstractItemModelTester::FailureReportingMode::Fatal);
        auto const first = encodeProject(editor.document());
        for (int i = 0; i < 120 && !testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE(i);
            if (random.below(15) == 0) {
                editor.project.editOutside([&](DemoProject& project) { editAtRandom(project, random); });
                editor.project->refresh();
            }
            actAtRandom(editor, random);
            expectSound(editor);
        }
        auto const last = encodeProject(editor.document());
        auto const count = steps.count();
        steps.goTo(-1);
        EXPECT_EQ(encodeProject(editor.document()), first);
        steps.goTo(count - 1);
        EXPECT_EQ(encodeProject(editor.document()), last);
        EXPECT_EQ(steps.count(), count);
    }
}

TEST(EditorSession, selectionAndPlayheadOutliveTheEditsOfOthers) {
    TestEditor editor(shortFilm());
    auto const zooms = editor.document().zoomEvents;
    editor->select(std::vector{zooms[1].id, zooms[2].id});
    editor->setPlayhead(7.5);
    commitFor(*editor.project.open(), "claude-code", "Cut",
              [](DemoProject& project) { removeTimeRange(project, 0, 3); });
    EXPECT_EQ(editor->selection(), (std::vector{zooms[1].id, zooms[2].id}));
    EXPECT_DOUBLE_EQ(editor->playhead(), 4.5);
    editor.project.editOutside([&](DemoProject& project) {
        std::erase_if(project.zoomEvents, [&](auto const& zoom) { return zoom.id == zooms[1].id; });
    });
    editor.project->refresh();
    EXPECT_EQ(editor->selection(), std::vector{zooms[2].id});
    editor.run("undo");
    editor.run("undo");
    EXPECT_DOUBLE_EQ(editor->playhead(), 7.5);
    EXPECT_TRUE(editor.told.empty());
}

TEST(EditorSession, theStepListSaysWhoMadeEachStep) {
    TestEditor editor(shortFilm());
    auto* const steps = editor->stepsModel();
    editor.run("addZoom");
    commitFor(*editor.project.open(), "claude-code", "Rename", [](DemoProject& project) { project.name = "Tour"; });
    editor.project.editOutside([](DemoProject& project) { project.name = "Trip"; });
    editor.project->refresh();
    std::string listed;
    auto const role = [&](char const* name) { return steps->roleNames().key(name); };
    for (int row = 0; row < steps->rowCount(); ++row) {
        auto const step = steps->index(row, 0);
        for (auto const* name : {"name", "maker", "agent"})
            listed += step.data(role(name)).toString().toStdString() + "|";
        listed += step.data(role("isCurrent")).toBool() ? "*\n" : "\n";
    }
    EXPECT_EQ(listed, "Add Zoom|person||\nRename|agent|claude-code|\nChanged Outside|otherProgram||*\n");
}

TEST(EditorSession, aDragIsOneStepAndBackWhereItBeganNone) {
    TestEditor editor(shortFilm());
    auto const zoom = editor.document().zoomEvents[0].id;
    auto const first = encodeProject(editor.document());
    editor->beginDrag(textOf(zoom));
    for (double by : {0.5, 1.0, 1.5}) editor->dragItems(by);
    editor->endDrag();
    EXPECT_EQ(editor.project->steps().size(), 1u);
    EXPECT_DOUBLE_EQ(editor.document().zoomEvents[0].start, 2.5);
    editor->beginDrag(textOf(zoom));
    editor->dragItems(100); // stops at the end
    EXPECT_DOUBLE_EQ(editor.document().zoomEvents[0].range().end(), 10);
    editor->cancelDrag();
    EXPECT_EQ(editor.project->steps().size(), 1u);
    editor.run("undo");
    EXPECT_EQ(encodeProject(editor.document()), first);
}

TEST(EditorSession, anEdgeDraggedInAndOutAgainBringsBackWhatItTookAway) {
    TestEditor editor(shortFilm());
    auto const before = editor.document().zoomEvents;
    editor->beginDrag(textOf(editor.document().timeline.clips[0].id));
    editor->dragEdge(false, 3);
    EXPECT_EQ(editor.document().zoomEvents.size(), 2u);
    EXPECT_DOUBLE_EQ(editor->duration(), 7);
    editor->dragEdge(false, 6);
    editor->endDrag();
    EXPECT_EQ(editor.document().zoomEvents, before);
    EXPECT_TRUE(editor.project->steps().empty());
}

TEST(EditorSession, aDragDoesNotTakeBackWhatSomebodyElseEditsMeanwhile) {
    TestEditor editor(shortFilm());
    auto const zoom = editor.document().zoomEvents[0].id;
    editor->beginDrag(textOf(zoom));
    editor->dragItems(0.5);
    editor.project.editOutside([](DemoProject& project) { project.name = "Tour"; });
    editor->dragItems(1);
    editor->endDrag();
    EXPECT_EQ(editor.document().name, "Tour");
    // The other program had the zoom where it was saved.
    EXPECT_DOUBLE_EQ(editor.document().zoomEvents[0].start, 1.5);

    editor->beginDrag(textOf(zoom));
    editor->dragItems(0.5);
    commitFor(*editor.project.open(), "claude-code", "Rename", [](DemoProject& project) { project.name = "Trip"; });
    editor->dragItems(1);
    editor->endDrag();
    EXPECT_EQ(editor.document().name, "Trip");
    EXPECT_DOUBLE_EQ(editor.document().zoomEvents[0].start, 2.5);
}

TEST(EditorSession, aDragSnapsUnlessItIsSwitchedOff) {
    TestEditor editor(shortFilm());
    editor->setTimelineScale(100);
    editor->setPlayhead(3.25);
    auto const drag = [&](double by) {
        editor->beginDrag(textOf(editor.document().zoomEvents[0].id));
        editor->dragItems(by, 8);
        editor->endDrag();
        auto const start = editor.document().zoomEvents[0].start;
        editor.run("undo");
        return start;
    };
    EXPECT_DOUBLE_EQ(drag(2.21), 3.25);
    EXPECT_DOUBLE_EQ(drag(2.95), 4);
    editor.run("toggleSnapping");
    EXPECT_DOUBLE_EQ(drag(2.21), 3.21);
}

TEST(EditorSession, deletingClipsTakesTheirSoundAndItemsAlong) {
    TestEditor editor(shortFilm());
    editor->select(std::vector{editor.document().timeline.clips[1].id, editor.document().zoomEvents[0].id});
    editor.run("delete");
    EXPECT_DOUBLE_EQ(editor->duration(), 6);
    EXPECT_EQ(editor.document().zoomEvents.size(), 1u);
    EXPECT_TRUE(editor.document().overlays.empty());
    EXPECT_EQ(editor.document().audioTracks[0].clips.size(), 1u);
    EXPECT_EQ(editor->undoName(), QStringLiteral("Delete 2 Items"));
    EXPECT_TRUE(editor->selection().empty());

    editor->select(std::vector{editor.document().timeline.clips[0].id});
    editor.run("delete");
    EXPECT_EQ(editor.told, std::vector<std::string>{"The edit would leave nothing of the video, and is not made."});
    EXPECT_DOUBLE_EQ(editor->duration(), 6);
}

TEST(EditorSession, whatIsCopiedIsPastedWithIdentitiesOfItsOwn) {
    TestEditor editor(shortFilm());
    for (auto const* name : {"screen.mp4", "mic.m4a"})
        std::ofstream(editor.project.package().assetURL(name)) << "media";
    auto const ids = std::vector{editor.document().zoomEvents[0].id, editor.document().captions.cues[0].id};
    editor->select(ids);
    editor.run("copy");
    editor->setPlayhead(5);
    ASSERT_TRUE(editor.isEnabled("paste"));
    editor.run("paste");
    ASSERT_EQ(editor.document().zoomEvents.size(), 4u);
    EXPECT_DOUBLE_EQ(editor.document().zoomEvents[3].start, 5);
    EXPECT_DOUBLE_EQ(editor.document().captions.cues[1].start, 6);
    EXPECT_EQ(editor->selection().size(), 2u);
    EXPECT_NE(editor->selection(), ids);
    EXPECT_DOUBLE_EQ(editor->duration(), 10);

    editor->select(std::vector{editor.document().timeline.clips[1].id});
    auto const copied = editor->copied();
    editor->setPlayhead(3);
    EXPECT_TRUE(editor->paste(copied));
    EXPECT_DOUBLE_EQ(editor->duration(), 14);
    EXPECT_EQ(editor.document().timeline.clips.size(), 4u);
    EXPECT_DOUBLE_EQ(*editor.document().timeline.sourceTime(4), 21);
    std::vector<std::pair<double, double>> sounds;
    for (auto const& clip : editor.document().audioTracks[0].clips) sounds.emplace_back(clip.start, clip.sourceStart);
    std::ranges::sort(sounds);
    EXPECT_EQ(sounds, (std::vector<std::pair<double, double>>{{0, 0}, {3, 20}, {7, 3}, {10, 20}}));

    TestEditor other(shortFilm());
    EXPECT_FALSE(other->paste(copied));
    EXPECT_FALSE(other->paste("{\"timeline\": 7}"));
    ASSERT_EQ(other.told.size(), 2u);
    EXPECT_EQ(other.told[0], "“mic.m4a” is not in this project, so what was copied cannot be pasted.");
}

TEST(EditorSession, aClipIsMovedWithWhatLiesOverIt) {
    TestEditor editor(shortFilm());
    auto const first = encodeProject(editor.document());
    auto const zooms = editor.document().zoomEvents;
    EXPECT_TRUE(editor->moveClip(textOf(editor.document().timeline.clips[1].id), 0.5));
    EXPECT_DOUBLE_EQ(editor->duration(), 10);
    EXPECT_DOUBLE_EQ(*editor.document().timeline.sourceTime(1), 21);
    EXPECT_DOUBLE_EQ(editor.document().overlays[0].start, 1);
    std::map<UUID, double> starts;
    for (auto const& zoom : editor.document().zoomEvents) starts[zoom.id] = zoom.start;
    EXPECT_DOUBLE_EQ(starts[zooms[0].id], 5);
    EXPECT_DOUBLE_EQ(starts[zooms[1].id], 8);
    EXPECT_DOUBLE_EQ(starts[zooms[2].id], 1);
    EXPECT_EQ(editor.document().zoomEvents.size(), 3u);
    EXPECT_FALSE(editor->moveClip(textOf(editor.document().timeline.clips[0].id), 1)); // it is there
    editor.run("undo");
    EXPECT_EQ(encodeProject(editor.document()), first);
}

TEST(EditorSession, aSoundThatAMovePartsIsTwoSounds) {
    auto document = shortFilm();
    document.timeline.clips[1].sourceStart = 6;
    document.audioTracks[0].clips = {{.asset = "mic.m4a", .duration = 10}};
    TestEditor editor(document);
    EXPECT_TRUE(editor->moveClip(textOf(editor.document().timeline.clips[1].id), 0));
    std::set<UUID> sounds;
    for (auto const& clip : editor.document().audioTracks[0].clips) sounds.insert(clip.id);
    EXPECT_EQ(sounds.size(), 2u);
    EXPECT_EQ(editor.document().audioTracks[0].clips.size(), 2u);
}

TEST(EditorSession, aBackgroundOfTheGalleryIsOneStep) {
    TestEditor editor(shortFilm());
    auto const gallery = editor->backgroundPresets();
    ASSERT_GT(gallery.size(), 3);
    auto const preset = gallery[2].toMap();
    EXPECT_TRUE(editor->setBackground(preset[QStringLiteral("id")].toString()));
    EXPECT_EQ(toVariant(editor.document().background), preset[QStringLiteral("style")]);
    EXPECT_EQ(editor->undoName(), QStringLiteral("Change Background"));
    EXPECT_FALSE(editor->setBackground(QStringLiteral("no such")));
    EXPECT_EQ(editor.told.size(), 1u);
}

TEST(EditorSession, eachCommandThatAddsSomethingSelectsIt) {
    auto document = shortFilm();
    document.cameraAsset = "camera.mp4";
    TestEditor editor(document);
    editor->setPlayhead(9.9);
    for (auto const& listed : editorCommands()) {
        if (std::string_view(listed.group) != "Add") continue;
        auto const steps = editor.project->steps().size();
        editor.run(listed.name);
        EXPECT_EQ(editor.project->steps().size(), steps + 1) << listed.name;
        ASSERT_EQ(editor->selection().size(), 1u) << listed.name;
        visitItem(editor.document(), editor->selection()[0], [&](auto const& item) {
            EXPECT_LE(placeOf(item).value_or(TimeRange::zero).end(), 10 + 1e-9) << listed.name;
        });
    }
    EXPECT_TRUE(editor.told.empty());
}

TEST(EditorSession, aRangeIsCutKeptAndRetimed) {
    TestEditor editor(shortFilm());
    editor->setPlayhead(2);
    editor.run("markStart");
    editor->setPlayhead(5);
    editor.run("markEnd");
    EXPECT_EQ(editor->range(), (TimeRange{2, 3}));
    editor.run("speedUp");
    EXPECT_DOUBLE_EQ(editor->duration(), 8.5);
    editor.run("undo");
    editor.run("cutRange");
    EXPECT_DOUBLE_EQ(editor->duration(), 7);
    EXPECT_EQ(editor->range().duration, 0);
    EXPECT_FALSE(editor.isEnabled("cutRange"));
    editor.run("undo");
    editor->setRange(2, 3);
    editor.run("keepRange");
    EXPECT_DOUBLE_EQ(editor->duration(), 3);
}

TEST(EditorSession, theMarqueeTakesWhatItTouchesOfTheLanesItCrosses) {
    TestEditor editor(shortFilm());
    editor->marquee(4.5, 3, {QStringLiteral("zoom"), QStringLiteral("caption")});
    EXPECT_EQ(editor->selection(),
              (std::vector{editor.document().zoomEvents[1].id, editor.document().zoomEvents[2].id}));
    editor->marquee(8, -7, {QStringLiteral("caption"), QStringLiteral("overlay")}, EditorSession::Select::also);
    EXPECT_EQ(editor->selection().size(), 4u);
    editor->marquee(0, 10, {QStringLiteral("zoom")}, EditorSession::Select::toggled);
    EXPECT_EQ(editor->selection().size(), 3u);
}

TEST(EditorSession, anEditIsSavedByItselfAndNotWhileItIsMade) {
    TestEditor editor(shortFilm());
    editor.run("addZoom");
    EXPECT_FALSE(editor->isSaved());
    EXPECT_EQ(editor.project.package().load().zoomEvents.size(), 3u);
    TestEditor::waitFor([&] { return editor->isSaved(); });
    EXPECT_EQ(editor.project.package().load().zoomEvents.size(), 4u);
    EXPECT_FALSE(editor.isEnabled("save"));
}

TEST(EditorSession, closingWaitsForTheSaveThatIsUnderWayAndSavesWhatCameAfterIt) {
    for (int i = 0; i < 20; ++i) {
        TestEditor editor(shortFilm());
        editor.run("addZoom");
        editor.run("save");
        if (i % 2) editor.run("addCaption");
        if (i % 3 == 0) QCoreApplication::processEvents();
        editor.session.reset();
        EXPECT_FALSE(editor.project->hasUnsavedChanges());
        auto const saved = editor.project.package().load();
        EXPECT_EQ(saved.zoomEvents.size(), 4u);
        EXPECT_EQ(saved.captions.cues.size(), 1u + i % 2);
        QCoreApplication::processEvents(); // what the thread said comes too late, and harms nobody
    }
}

TEST(EditorSession, whatAnotherProgramSavesOrSpoilsIsNoticed) {
    TestEditor editor(shortFilm());
    int outside = 0;
    QObject::connect(editor.session.get(), &EditorSession::changedOutside, [&] { ++outside; });
    editor.project.editOutside([](DemoProject& project) { project.name = "Tour"; });
    TestEditor::waitFor([&] { return editor->name() == QStringLiteral("Tour"); });
    EXPECT_EQ(outside, 1);
    std::ofstream(editor.project.package().projectFileURL()) << "{ spoilt";
    TestEditor::waitFor([&] { return !editor.told.empty(); });
    EXPECT_TRUE(editor.told[0].ends_with("What is open here is kept, and saving writes it again.")) << editor.told[0];
    TestEditor::waitFor([&] { return editor->isSaved(); });
    EXPECT_EQ(editor.project.package().load().name, "Tour");
}

TEST(EditorSession, theWindowIsAsItWasLeft) {
    TestEditor editor(shortFilm());
    auto const zoom = editor.document().zoomEvents[1].id;
    editor->setPlayhead(4.25);
    editor->select(std::vector{zoom});
    editor->setInspector(QStringLiteral("camera"));
    editor->setSnaps(false);
    editor->setTimelineScale(42);
    editor->setCollapsedLanes({QStringLiteral("sound")});
    editor.session.reset();
    editor.open();
    EXPECT_EQ(editor->playhead(), 4.25);
    EXPECT_EQ(editor->selection(), std::vector{zoom});
    EXPECT_EQ(editor->inspector(), QStringLiteral("camera"));
    EXPECT_FALSE(editor->snaps());
    EXPECT_EQ(editor->timelineScale(), 42);
    EXPECT_EQ(editor->collapsedLanes(), QStringList{QStringLiteral("sound")});
}

TEST(EditorSession, aFileIsBroughtInBesideTheWindow) {
    TestEditor editor(shortFilm());
    TemporaryFolder const elsewhere;
    std::ofstream(elsewhere / "sky.png") << "picture";
    QString name;
    QObject::connect(editor.session.get(), &EditorSession::imported,
                     [&](QString const&, QString const& asset) { name = asset; });
    editor->importFile(QString::fromStdString((elsewhere / "sky.png").string()));
    TestEditor::waitFor([&] { return !name.isEmpty(); });
    EXPECT_TRUE(std::filesystem::exists(editor.project.package().assetURL(name.toStdString())));
    editor->importFile(QStringLiteral("/nowhere/sky.png"));
    TestEditor::waitFor([&] { return !editor.told.empty(); });
}

TEST(EditorSession, theFieldsAreThoseOfTheSelectionOrTheOpenInspector) {
    TestEditor editor(shortFilm());
    editor->setInspector(QStringLiteral("camera"));
    auto* const fields = editor->fieldsModel();
    auto const title = [&] { return fields->property("title").toString().toStdString(); };
    EXPECT_EQ(title(), "Camera");
    editor->select(std::vector{editor.document().zoomEvents[1].id});
    EXPECT_EQ(title(), "Zoom 1.6×");
    editor.run("delete");
    EXPECT_EQ(title(), "Camera");
}

TEST(EditorSession, polishingIsOneStepOverWhatIsEditedMeanwhile) {
    auto document = shortFilm();
    for (double t = 1; t < 5; t += 2) document.metadata.edit().clicks.push_back({.t = t, .position = {0.3, 0.6}});
    TestEditor editor(document);
    editor->polish()->setSwitch(QStringLiteral("background"), false);
    editor.run("polish");
    EXPECT_FALSE(editor.isEnabled("polish"));
    editor->rename(QStringLiteral("Tour"));
    TestEditor::waitFor([&] { return !editor->polish()->isRunning(); });
    EXPECT_EQ(editor->undoName(), QStringLiteral("Auto Polish"));
    EXPECT_EQ(editor.document().name, "Tour");
    EXPECT_EQ(editor.document().background, document.background);
    EXPECT_FALSE(editor->polish()->report().empty());
    EXPECT_EQ(editor.project->steps().size(), 2u);
    editor.run("polish");
    editor->polish()->cancel();
    EXPECT_TRUE(editor.isEnabled("polish"));
}

TEST(EditorCommands, eachHasANameATitleAndAShortcutOfItsOwn) {
    std::set<std::string_view> names, shortcuts;
    for (auto const& listed : editorCommands()) {
        EXPECT_TRUE(names.insert(listed.name).second) << listed.name;
        EXPECT_FALSE(std::string_view(listed.title).empty()) << listed.name;
        EXPECT_TRUE(!*listed.shortcut || shortcuts.insert(listed.shortcut).second) << listed.shortcut;
    }
}
