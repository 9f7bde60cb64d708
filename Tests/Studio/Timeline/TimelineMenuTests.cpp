#include <Tavaro/Studio/Timeline/TimelineItem.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTest>

#include <fmt/format.h>

#include <string>

using namespace tavaro;

namespace {

class TimelineMenu : public testing::Test {
protected:
    static void SetUpTestSuite() { QQuickWindow::setGraphicsApi(QSGRendererInterface::Software); }
    TimelineMenu() {
        project.assetDurations["screen.mp4"] = 20;
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 10},
                                  {.asset = "screen.mp4", .start = 10, .duration = 10}};
        project.zoomEvents = {{.start = 2, .duration = 4}};
        window.resize(800, 400);
        item.setParentItem(window.contentItem());
        item.setSize(QSizeF(800, 400));
        item.onIntent([this](TimelineIntent const& intent) { take(intent); });
        QObject::connect(&item, &TimelineItem::menuWanted,
                         [this](double, double, QString const& place) { heard += place.toStdString() + " "; });
        item.show(project);
        window.show();
    }
    void take(TimelineIntent const& intent) {
        if (auto const* select = std::get_if<timelineIntents::Select>(&intent)) {
            item.setSelection(select->ids);
            heard += "select ";
        }
        if (auto const* moved = std::get_if<timelineIntents::Scrub>(&intent))
            heard += fmt::format("to {:.0f} ", moved->time);
    }
    std::string clickRight(UUID const& id, double share = 0.5) {
        auto const box = item.layout().box(item.view(), *item.layout().find(id));
        return clickRight(box.x + share * box.width, box.y + box.height * 0.75);
    }
    std::string clickRight(double x, double y) {
        heard.clear();
        QTest::mouseClick(&window, Qt::RightButton, {}, QPointF(x, y).toPoint());
        return heard;
    }

    DemoProject project;
    QQuickWindow window;
    TimelineItem item; // goes before the window
    std::string heard;
};

}

TEST_F(TimelineMenu, itIsOfWhatIsUnderThePointerWhichIsSelectedAndWhereThePlayheadGoes) {
    EXPECT_EQ(clickRight(project.zoomEvents[0].id), "to 4 select item ");
    EXPECT_EQ(clickRight(project.zoomEvents[0].id), "to 4 item ") << "it is selected already";
    EXPECT_EQ(clickRight(project.timeline.clips[1].id), "to 15 select clip ");
    EXPECT_EQ(clickRight(item.view().x(7), TimelineView::rulerHeight / 2), "to 7 timeline ");
    EXPECT_EQ(clickRight(TimelineView::headerWidth / 2, TimelineView::rulerHeight + 10), "timeline ")
        << "a lane's head is at no time";
}

TEST_F(TimelineMenu, theKeyboardOpensItForWhatIsSelected) {
    item.forceActiveFocus();
    window.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window, 60'000));
    heard.clear();
    QTest::keyClick(&window, Qt::Key_Menu);
    EXPECT_EQ(heard, "timeline ");
    item.setSelection({project.timeline.clips[0].id});
    QTest::keyClick(&window, Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(heard, "timeline clip ");
}
