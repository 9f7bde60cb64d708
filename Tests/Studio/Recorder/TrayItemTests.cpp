#include "RecorderTest.h"
#include "TestTray.h"

#include "../../Capture/TestBus.h"

#include <Tavaro/Studio/Recorder/TrayItem.h>
#include <Tavaro/Studio/Recorder/TrayMenu.h>

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

    /// What the menu offers now, as a tray shows it.
    QStringList menu(QString const& item) const {
        auto call = QDBusMessage::createMethodCall(item, "/StatusNotifierMenu", "com.canonical.dbusmenu", "GetLayout");
        call << 0 << -1 << QStringList();
        QDBusPendingReply<uint, TrayMenuItem> const reply = connection("tray").asyncCall(call);
        becomes([&] { return reply.isFinished(); });
        QStringList offered{reply.isValid() ? QString() : reply.error().message()};
        for (auto const& each : reply.isValid() ? reply.argumentAt<1>().items : QList<TrayMenuItem>())
            if (each.properties.value("enabled").toBool()) offered << each.properties.value("label").toString();
        return offered.mid(1);
    }
    void choose(QString const& item, int id) const {
        auto call = QDBusMessage::createMethodCall(item, "/StatusNotifierMenu", "com.canonical.dbusmenu", "Event");
        call << id << "clicked" << QVariant::fromValue(QDBusVariant(QString())) << 0u;
        connection("tray").send(call);
    }

    TestBus bus;
};

}

TEST_F(TrayItemTest, itsMenuOffersWhatFitsAndDoesIt) {
    constexpr int record = 1, stop = 2, pause = 3, library = 5, quit = 7;
    {
        RecorderModel model(queue, application, settings());
        TrayItem item(model, connection("item"));
        TestTray const tray(connection("tray"));
        ASSERT_TRUE(becomes([&] { return item.isThere(); }));
        EXPECT_EQ(menu(tray.item), QStringList({"Record", "Open library", "Quit"}));
        QStringList wanted;
        QObject::connect(&item, &TrayItem::libraryWanted, [&] { wanted << "library"; });
        QObject::connect(&item, &TrayItem::endWanted, [&] { wanted << "end"; });
        for (int const id : {stop, pause, library, quit, 99, 0, -1}) choose(tray.item, id);
        EXPECT_TRUE(becomes([&] { return wanted.size() == 2; }));
        EXPECT_EQ(wanted, QStringList({"library", "end"}));
        choose(tray.item, record);
        ASSERT_TRUE(becomes([&] { return model.phase() == RecorderModel::Recording; }))
            << model.failure().toStdString();
        EXPECT_EQ(menu(tray.item), QStringList({"Stop", "Pause", "Open library", "Quit"}));
        choose(tray.item, pause);
        EXPECT_TRUE(becomes([&] { return model.phase() == RecorderModel::Paused; }));
        EXPECT_EQ(menu(tray.item), QStringList({"Stop", "Resume", "Open library", "Quit"}));
        choose(tray.item, stop);
        EXPECT_TRUE(becomes([&] { return model.phase() == RecorderModel::Idle; }));
    }
    for (auto const* const name : {"item", "tray"}) QDBusConnection::disconnectFromBus(name);
}

TEST_F(TrayItemTest, itIsInATrayThatAnswersAndWorksTheRecorderFromThere) {
    {
        RecorderModel model(queue, application, settings());
        TrayItem item(model, connection("item"));
        auto tray = std::make_optional<TestTray>(connection("tray")); // it comes later than the item
        ASSERT_TRUE(becomes([&] { return item.isThere(); }));
        EXPECT_EQ(property(tray->item, "Status"), "Active");
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
