#include "RecorderTest.h"
#include "TestTray.h"

#include "../../Capture/TestBus.h"

#include <Tavaro/Studio/Recorder/TrayItem.h>

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <optional>

using namespace tavaro;

namespace {

class TrayItemTest : public RecorderTest {
protected:
    void SetUp() override {
        RecorderTest::SetUp();
        if (bus.address().empty()) GTEST_SKIP() << "no message bus";
    }
    QDBusConnection connection(char const* name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(bus.address()), name);
    }

    /// Without blocking, since the item answers on this thread.
    QString property(QString const& item, char const* name) const {
        auto call =
            QDBusMessage::createMethodCall(item, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get");
        call << "org.kde.StatusNotifierItem" << name;
        QDBusPendingReply<QDBusVariant> const reply = connection("tray").asyncCall(call);
        becomes([&] { return reply.isFinished(); });
        return reply.isValid() ? reply.value().variant().toString() : reply.error().message();
    }

    TestBus bus;
};

}

TEST_F(TrayItemTest, itIsInATrayThatAnswersAndWorksTheRecorderFromThere) {
    {
        RecorderModel model(queue, application, settings());
        TrayItem item(model, connection("item"));
        auto tray = std::make_optional<TestTray>(connection("tray")); // it comes later than the item
        ASSERT_TRUE(becomes([&] { return item.isThere(); }));
        EXPECT_EQ(property(tray->item, "Status"), "Passive");
        auto const send = [&](char const* order) {
            auto call =
                QDBusMessage::createMethodCall(tray->item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", order);
            call << 0 << 0;
            connection("tray").send(call);
        };
        bool isWindowWanted = false;
        QObject::connect(&item, &TrayItem::windowWanted, [&] { isWindowWanted = true; });
        send("Activate");
        EXPECT_TRUE(becomes([&] { return isWindowWanted; }));
        send("SecondaryActivate");
        ASSERT_TRUE(becomes([&] { return model.phase() == RecorderModel::Recording; }))
            << model.failure().toStdString();
        EXPECT_EQ(property(tray->item, "IconName"), "media-record");
        send("SecondaryActivate");
        EXPECT_TRUE(becomes([&] { return model.phase() == RecorderModel::Paused; }));
        send("Activate");
        EXPECT_TRUE(becomes([&] { return model.phase() == RecorderModel::Idle; }));
        tray.reset();
        EXPECT_TRUE(becomes([&] { return !item.isThere(); }));
    }
    for (auto const* const name : {"item", "tray"}) QDBusConnection::disconnectFromBus(name);
}
