#include "../../Capture/TestBus.h"
#include "../Editor/TestEditor.h"
#include "TestDesktop.h"

#include <Tavaro/Studio/Exports/ExportNotice.h>
#include <Tavaro/Studio/Exports/SleepGuard.h>

#include <gtest/gtest.h>

using namespace tavaro;

namespace {

class ExportDesktop : public testing::Test {
protected:
    void SetUp() override {
        if (bus.address().empty()) GTEST_SKIP() << "no message bus";
    }
    ~ExportDesktop() override {
        for (auto const* const name : {"ours", "desktop"}) QDBusConnection::disconnectFromBus(name);
    }
    QDBusConnection connection(char const* name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(bus.address()), name);
    }

    TestBus bus;
};

}

TEST_F(ExportDesktop, aFilmThatIsDoneIsToldAndItsActionShowsIt) {
    TestDesktop desktop(connection("desktop"));
    ExportNotice notice(connection("ours"));
    QString asked;
    QObject::connect(&notice, &ExportNotice::showRequested, [&](QString const& file) { asked = file; });
    notice.tell("“Tour” is exported", "Tour.mp4", "/films/Tour.mp4");
    notice.tell("“Tour” could not be exported", "The disk is full.", "");
    TestEditor::waitFor([&] { return desktop.shown.size() == 2 && notice.isAwaited(); });
    EXPECT_EQ(desktop.shown[0], "“Tour” is exported: Tour.mp4 [show Show in folder]");
    EXPECT_EQ(desktop.shown[1], "“Tour” could not be exported: The disk is full. []");
    desktop.press(1);
    TestEditor::waitFor([&] { return !asked.isEmpty(); });
    EXPECT_EQ(asked, "/films/Tour.mp4");
    desktop.close(1);
    TestEditor::waitFor([&] { return !notice.isAwaited(); });
}

TEST_F(ExportDesktop, theMachineIsKeptAwakeWhileItIsHeldAndNotLonger) {
    TestInhibit portal(connection("desktop"));
    SleepGuard guard("A film is being exported", connection("ours"), [this] { return connection("ours"); });
    guard.setHeld(true);
    guard.setHeld(true);
    TestEditor::waitFor([&] { return guard.isKept(); });
    EXPECT_EQ(portal.asked, QStringList("4: A film is being exported"));
    guard.setHeld(false);
    TestEditor::waitFor([&] { return !portal.isHeld(); });
    guard.setHeld(true);
    guard.setHeld(false); // before there is an answer
    TestEditor::waitFor([&] { return portal.asked.size() == 2 && !portal.isHeld(); });
    EXPECT_FALSE(guard.isKept());
}

TEST_F(ExportDesktop, aDesktopThatHasNeitherIsNoFailure) {
    ExportNotice notice(connection("ours"));
    notice.tell("“Tour” is exported", "Tour.mp4", "/films/Tour.mp4");
    SleepGuard guard("A film is being exported", connection("ours"), [this] { return connection("ours"); });
    guard.setHeld(true);
    QCoreApplication::processEvents(QEventLoop::AllEvents, 200);
    EXPECT_FALSE(guard.isKept() || notice.isAwaited());
}
