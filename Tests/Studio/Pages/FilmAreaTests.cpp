#include "ShownPage.h"

#include "../../Render/Export/TestTake.h"

#include <Tavaro/Studio/Handles/FilmHandles.h>

#include <QTest>
#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::IsEmpty;

namespace {

/// A title in the middle, and a camera in the corner.
DemoProject film() {
    DemoProject project;
    project.sourceSize = {320, 180};
    project.assetDurations = {{"screen.mp4", 1}, {"camera.mp4", 1}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 1}};
    project.cameraAsset = "camera.mp4";
    project.overlays = {{.kind = {OverlayKind::Title{.text = "Welcome"}}, .duration = 1, .position = {0.5, 0.4}}};
    return project;
}

/// The film of a project with all that is laid over it, worked by mouse and keys.
class FilmAreaTest : public testing::Test {
protected:
    FilmAreaTest() {
        handles = page.view->findChild<FilmHandles*>();
        page.session().setPlayhead(0.5);
        auto const& picture = page.desk->preview()->picture();
        TestEditor::waitFor([&] { return picture.places && picture.places->editTime == 0.5; });
    }
    ~FilmAreaTest() override { EXPECT_THAT(page.warnings, IsEmpty()); }

    /// The camera films the same.
    std::filesystem::path assets() const {
        std::filesystem::copy_file(take.package.assetURL("screen.mp4"), take.package.assetURL("camera.mp4"));
        return take.package.assetsURL();
    }
    DemoProject const& now() const { return page.document(); }
    /// A place of the film, given as shares of it, in the window.
    QPoint at(double x, double y) const {
        auto const film = handles->film();
        return handles->mapToScene({film.x() + x * film.width(), film.y() + y * film.height()}).toPoint();
    }
    void press(QPoint place) { QTest::mousePress(page.view.get(), Qt::LeftButton, {}, place); }
    void move(QPoint place) { QTest::mouseMove(page.view.get(), place); }
    void release(QPoint place) { QTest::mouseRelease(page.view.get(), Qt::LeftButton, {}, place); }
    void drag(QPoint from, QPoint to) {
        press(from);
        move((from + to) / 2);
        move(to);
        release(to);
    }
    /// In the window, once that thing of the film is there.
    QRectF placeOf(QString const& name) {
        QRectF place;
        TestEditor::waitFor([&] {
            for (auto const& thing : handles->things()) {
                auto const facts = thing.toMap();
                if (!facts[QStringLiteral("name")].toString().startsWith(name)) continue;
                place = handles->mapRectToScene(facts[QStringLiteral("place")].toRectF());
            }
            return !place.isEmpty();
        });
        return place;
    }

    TestTake take{"film-area", 30};
    ShownPage page{"FilmArea.qml", film(), {{900, 560}, {{QStringLiteral("name"), QStringLiteral("Film")}}, assets()}};
    FilmHandles* handles = nullptr;
};

constexpr double onePixel = 1.0 / 400; // of the film as it is shown here, and some

}

TEST_F(FilmAreaTest, anAreaToHideIsDrawnWithItsToolWhichEscapePutsAway) {
    page.click(QStringLiteral("Draw an area to hide"));
    press(at(0.2, 0.6));
    move(at(0.3, 0.7));
    move(at(0.4, 0.8));
    EXPECT_NEAR(handles->drawn().width(), handles->film().width() * 0.2, 2) << "it is seen while it is drawn";
    release(at(0.4, 0.8));
    ASSERT_EQ(now().redactions->size(), 1u);
    EXPECT_NEAR(now().redactions->front().start, 0.5, 1e-6);
    EXPECT_EQ(handles->tool(), "select");
    auto const place = placeOf(QStringLiteral("Redaction"));
    EXPECT_NEAR(place.x(), at(0.2, 0).x(), 2);
    EXPECT_NEAR(place.bottom(), at(0, 0.8).y(), 2);
    page.session().undo();
    page.click(QStringLiteral("Draw an area to hide"));
    page.press(Qt::Key_Escape);
    drag(at(0.2, 0.6), at(0.4, 0.8));
    EXPECT_TRUE(now().redactions->empty());
}

TEST_F(FilmAreaTest, theRecordingIsCroppedByItsCornersAndShownWholeAgain) {
    page.click(QStringLiteral("Crop the recording"));
    auto const whole = placeOf(QStringLiteral("Crop"));
    drag(whole.topLeft().toPoint(), (whole.topLeft() + QPointF(whole.width() / 4, whole.height() / 4)).toPoint());
    ASSERT_TRUE(now().sourceCrop);
    EXPECT_NEAR(now().sourceCrop->x, 0.25, 2 * onePixel);
    EXPECT_NEAR(now().sourceCrop->maxY(), 1, onePixel);
    EXPECT_EQ(placeOf(QStringLiteral("Crop")).bottomRight(), whole.bottomRight()) << "the rest stays in view, dark";
    page.click(QStringLiteral("Show all of the recording again"));
    EXPECT_FALSE(now().sourceCrop);
    page.press(Qt::Key_Escape);
    EXPECT_EQ(handles->tool(), "select");
}

TEST_F(FilmAreaTest, aTitleIsWrittenWhereItIsAndThenTheKeysAreTheFilmsAgain) {
    auto const text = [&] { return std::get<OverlayKind::Title>(now().overlays[0].kind.content).text; };
    auto const middle = placeOf(QStringLiteral("Title")).center().toPoint();
    QTest::mouseDClick(page.view.get(), Qt::LeftButton, {}, middle);
    page.waitForItem(QStringLiteral("Text on the film"));
    page.type("Hello");
    EXPECT_EQ(text(), "Welcome") << "as long as it is written";
    page.press(Qt::Key_Return);
    EXPECT_EQ(text(), "Hello");
    EXPECT_FALSE(page.find(QStringLiteral("Text on the film")));
    auto const before = now().overlays[0].position;
    page.press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_GT(now().overlays[0].position.x, before.x);

    page.press(Qt::Key_Return);
    page.waitForItem(QStringLiteral("Text on the film"));
    page.type("Other");
    page.press(Qt::Key_Escape);
    EXPECT_EQ(text(), "Hello") << "Escape leaves it as it was";
    page.press(Qt::Key_Return);
    page.waitForItem(QStringLiteral("Text on the film"));
    page.type("Kept");
    QTest::mouseClick(page.view.get(), Qt::LeftButton, {}, at(0.1, 0.9));
    EXPECT_EQ(text(), "Kept") << "a click beside it keeps it";
}

TEST_F(FilmAreaTest, byKeysAloneAThingIsReachedChosenMovedAndResized) {
    QTest::mouseClick(page.view.get(), Qt::LeftButton, {}, at(0.05, 0.95));
    auto const focused = [&] {
        auto* const item = page.view->activeFocusItem();
        auto* const face = item ? QAccessible::queryAccessibleInterface(item) : nullptr;
        return face ? face->text(QAccessible::Name) : QString();
    };
    for (int i = 0; i < 4 && !focused().startsWith(QStringLiteral("Title")); ++i) page.press(Qt::Key_Tab);
    ASSERT_TRUE(focused().startsWith(QStringLiteral("Title"))) << focused().toStdString();
    page.press(Qt::Key_Space);
    EXPECT_EQ(page.session().selection(), std::vector{now().overlays[0].id});
    auto const before = now().overlays[0];
    page.press(Qt::Key_Down);
    page.press(Qt::Key_Plus);
    EXPECT_GT(now().overlays[0].position.y, before.position.y);
    EXPECT_GT(now().overlays[0].fontSize, before.fontSize);
    EXPECT_EQ(page.project->steps().size(), 2u) << "each key is a step";
}

TEST_F(FilmAreaTest, theCameraIsResizedByItsCornerAndASplitByItsDivider) {
    auto const camera = placeOf(QStringLiteral("Camera"));
    auto const size = now().camera.size;
    QTest::mouseClick(page.view.get(), Qt::LeftButton, {}, camera.center().toPoint());
    EXPECT_EQ(page.session().inspector(), "camera");
    drag(camera.topLeft().toPoint(), (camera.topLeft() - QPointF(60, 60)).toPoint());
    EXPECT_GT(now().camera.size, size * 1.2);

    page.session().edit("Split", [](DemoProject& project) {
        project.layout.content = CanvasLayout::Split{SplitArrangement::cameraRight, 0.4};
    });
    auto const divider = placeOf(QStringLiteral("Divider")).center();
    drag(divider.toPoint(), (divider + QPointF(-80, 30)).toPoint());
    auto const share = std::get<CanvasLayout::Split>(now().layout.content).cameraFraction;
    EXPECT_NEAR(share, 0.4 + 80 / handles->film().width(), 0.03);
}
