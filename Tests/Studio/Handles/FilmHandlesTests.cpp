#include "../Editor/TestEditor.h"
#include "../Playback/FakeOutput.h"

#include "../../Render/Export/TestTake.h"

#include <Tavaro/Studio/Handles/FilmHandles.h>
#include <Tavaro/Studio/Preview/PreviewItem.h>

#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest/QTest>
#include <gtest/gtest.h>

#include <memory>

namespace tavaro {

namespace {

/// A film with a title in a window, its picture drawn, its handles over it.
class FilmHandlesTest : public testing::Test {
protected:
    FilmHandlesTest() {
        auto project = take.project;
        Overlay title{.start = 0.5, .duration = 2, .position = {0.4, 0.4}};
        title.kind.content = OverlayKind::Title{.text = "Hello"};
        project.overlays = {title};
        project.zoomEvents = {{.start = 0.2, .duration = 2, .rampIn = 0.1, .rampOut = 0.1}};
        take.package.save(project);
        open = std::make_shared<OpenProject>(readProject(take.package.url()));
        session.emplace(queue, open);
        preview.emplace(*open, FilmPlayback::Means{std::make_unique<FakeOutput>(device), {}});
        QObject::connect(&*session, &EditorSession::playheadChanged,
                         [this] { preview->playback()->seek(session->playhead()); });
        session->setPlayhead(1);

        window.resize(680, 400);
        picture.setParentItem(window.contentItem());
        handles.setParentItem(window.contentItem());
        picture.setSize({680, 400});
        handles.setSize({680, 400});
        window.show();
        picture.setPreview(&*preview);
        handles.setSession(&*session);
        handles.setPreview(&*preview);
        handles.setFilm(picture.filmRect());
        TestEditor::waitFor([this] { return handles.things().size() == 1; });
    }
    ~FilmHandlesTest() override { picture.setPreview(nullptr); }

    DemoProject const& document() const { return open->document(); }
    QRectF place() const { return handles.things().value(0).toMap()["place"].toRectF(); }
    QPoint middle() const { return place().center().toPoint(); }
    void press(QPoint const& at, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(&window, Qt::LeftButton, modifiers, at);
    }
    void move(QPoint const& at) { QTest::mouseMove(&window, at); }
    void release(QPoint const& at) { QTest::mouseRelease(&window, Qt::LeftButton, {}, at); }

    /// A window without a display is drawn so.
    static QWindow* software() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        return nullptr;
    }

    TestTake take{"handles", 90};
    MainQueue queue;
    QueueInLoop loop{queue};
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    std::shared_ptr<OpenProject> open;
    std::optional<EditorSession> session;
    std::optional<FilmPreview> preview;
    QQuickWindow window{software()};
    PreviewItem picture;
    FilmHandles handles;
};

}

TEST_F(FilmHandlesTest, aTitleIsDraggedWithTheMouseAndThePictureFollows) {
    auto const before = place();
    auto const from = middle();
    press(from);
    EXPECT_EQ(session->selection(), std::vector{document().overlays[0].id});
    EXPECT_EQ(handles.grips().size(), 4);
    move(from + QPoint(20, 10));
    move(from + QPoint(62, 41));
    release(from + QPoint(62, 41));
    EXPECT_EQ(session->undoName(), "Move Title");
    TestEditor::waitFor([&] { return std::abs(place().x() - before.x() - 62) < 8; });
    EXPECT_NEAR(place().y() - before.y(), 41, 8) << "a line may have caught it";
    session->undo();
    TestEditor::waitFor([&] { return place() == before; });

    press(from);
    move(from + QPoint(40, 40));
    EXPECT_NE(document().overlays[0].position, (UnitPoint2{0.4, 0.4}));
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_EQ(document().overlays[0].position, (UnitPoint2{0.4, 0.4}));
    release(from + QPoint(40, 40));
    EXPECT_EQ(session->undoName(), "");
}

TEST_F(FilmHandlesTest, aKeyThatIsLetGoInADragDoesNotEndIt) {
    auto const from = middle();
    auto const position = [&] { return document().overlays[0].position; };
    press(from);
    move(from + QPoint(30, 0));
    auto const moved = position();
    QTest::keyPress(&window, Qt::Key_Shift, Qt::ShiftModifier);
    QTest::keyRelease(&window, Qt::Key_Shift);
    move(from + QPoint(90, 60));
    EXPECT_GT(position().x, moved.x);
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_EQ(position(), (UnitPoint2{0.4, 0.4})) << "all of it is taken back";
    release(from);
}

TEST_F(FilmHandlesTest, aFilmThatBeginsToPlayUnderTheHandIsNotDragged) {
    auto const before = document();
    auto const from = middle();
    press(from);
    preview->playback()->play();
    ASSERT_TRUE(handles.things().empty());
    move(from + QPoint(20, 20));
    move(from + QPoint(60, 60));
    release(from + QPoint(60, 60));
    EXPECT_EQ(document(), before);
}

TEST_F(FilmHandlesTest, theArrowKeysMoveWhatIsSelectedAndOnlyThen) {
    QTest::mouseClick(&window, Qt::LeftButton, {}, {2, 2});
    QKeyEvent idle(QEvent::ShortcutOverride, Qt::Key_Right, {});
    idle.ignore();
    QCoreApplication::sendEvent(&handles, &idle);
    EXPECT_FALSE(idle.isAccepted()) << "the playhead's";
    QTest::mouseClick(&window, Qt::LeftButton, {}, middle());
    QCoreApplication::sendEvent(&handles, &idle);
    EXPECT_TRUE(idle.isAccepted());
    auto const x = (place().center().x() - handles.film().x()) / handles.film().width();
    QTest::keyClick(&window, Qt::Key_Right);
    QTest::keyClick(&window, Qt::Key_Right, Qt::ShiftModifier);
    auto const position = [&] { return document().overlays[0].position; };
    EXPECT_NEAR(position().x, x + 11.0 / 640, 0.002);
    session->undo();
    auto const once = position().x;
    session->undo();
    EXPECT_EQ(position().x, 0.4);
    EXPECT_GT(once, 0.3) << "each key is a step of its own";
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(session->selection().empty());
}

TEST_F(FilmHandlesTest, tabLeadsFromThePictureToTheThingsOnIt) {
    QQuickItem first(&handles), second(&handles), elsewhere(window.contentItem());
    for (auto* item : {&first, &second, &elsewhere}) item->setActiveFocusOnTab(true);
    QTest::mouseClick(&window, Qt::LeftButton, {}, middle());
    QTest::keyClick(&window, Qt::Key_Tab);
    EXPECT_EQ(window.activeFocusItem(), &first);
    QTest::keyClick(&window, Qt::Key_Tab);
    EXPECT_EQ(window.activeFocusItem(), &second);
}

TEST_F(FilmHandlesTest, aDoubleClickEditsATextWhereItIs) {
    int asked = 0;
    QObject::connect(&handles, &FilmHandles::textAsked, [&] { ++asked; });
    QTest::mouseDClick(&window, Qt::LeftButton, {}, middle());
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(handles.editedText(), "Hello");
    EXPECT_EQ(handles.editedPlace(), place());
    handles.setText("Good bye");
    EXPECT_EQ(session->undoName(), "Edit Text");
    EXPECT_TRUE(handles.editedPlace().isEmpty());
    handles.editText();
    handles.leaveText();
    session->undo();
    EXPECT_EQ(session->undoName(), "");
}

TEST_F(FilmHandlesTest, aSelectedZoomIsSeenUnzoomedUntilTheFilmPlays) {
    auto const scale = [&] { return preview->picture().places ? preview->picture().places->zoom.scale : 0; };
    EXPECT_NEAR(scale(), 1.6, 1e-9);
    session->select(std::vector{document().zoomEvents[0].id});
    TestEditor::waitFor([&] { return scale() == 1; });
    TestEditor::waitFor([&] { return handles.things().size() == 2; });
    preview->playback()->play();
    TestEditor::waitFor([&] { return handles.things().empty() && !preview->picture().places; });
    EXPECT_EQ(preview->view().zooms, ZoomUse::unzoomed) << "and again afterwards";
    preview->playback()->pause();
    TestEditor::waitFor([&] { return scale() == 1; });
}

TEST_F(FilmHandlesTest, whileTheBackslashIsHeldTheTakeIsSeenAsItWasRecorded) {
    auto const edited = preview->grab();
    QTest::keyPress(&window, Qt::Key_Backslash);
    EXPECT_TRUE(handles.isComparing());
    TestEditor::waitFor([&] { return preview->grab() != edited && handles.things().empty(); });
    auto raw = document();
    raw.overlays.clear();
    raw.zoomEvents.clear();
    EXPECT_EQ(preview->view().of(document()).overlays, raw.overlays);
    QTest::keyRelease(&window, Qt::Key_Backslash);
    TestEditor::waitFor([&] { return preview->grab() == edited; });
    TestEditor::waitFor([&] { return handles.things().size() == 1; });
}

TEST(FilmThing, aCaptionThatIsWrittenOtherwiseIsSpokenOtherwise) {
    DemoProject project;
    project.captions.cues = {{.duration = 2, .text = "one two", .words = {{"one", 0, 1}, {"two", 1, 2}}}};
    FilmThing const caption{.kind = ThingKind::caption, .id = project.captions.cues[0].id};
    setText(project, caption, "one too");
    ASSERT_EQ(project.captions.cues[0].words.size(), 2U);
    EXPECT_EQ(project.captions.cues[0].words[1].text, "too");
    setText(project, caption, "one and two");
    EXPECT_TRUE(project.captions.cues[0].words.empty());
    EXPECT_EQ(project.captions.cues[0].text, "one and two");
}

TEST(FilmView, theTakeAsItWasRecordedStillHidesWhatTheEditHides) {
    DemoProject project;
    project.sourceCrop = NormalizedRect{0.1, 0.1, 0.5, 0.5};
    project.overlays = {{.kind = {OverlayKind::Title{.text = "Title"}}},
                        {.kind = {OverlayKind::Mask{{0.1, 0.1, 0.2, 0.2}}}},
                        {.kind = {OverlayKind::Blur{{0.4, 0.1, 0.2, 0.2}}}}};
    project.redactions = std::vector<RedactionTrack>{{.end = 5, .keyframes = {{0, {0.5, 0.5, 0.1, 0.1}}}}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20, .speed = 2}};
    auto const raw = FilmView{.shows = FilmView::Shows::rawTake, .resting = {}}.of(project);
    ASSERT_EQ(raw.overlays.size(), 2u);
    EXPECT_EQ(*raw.redactions, *project.redactions);
    EXPECT_FALSE(raw.sourceCrop);
    EXPECT_EQ(raw.timeline, project.timeline) << "a moment stays the moment";
    EXPECT_EQ(FilmView{}.of(project), project);
}

}
