#include "TestDesktop.h"

namespace tavaro {

namespace {

char const* const notifications = "/org/freedesktop/Notifications";
char const* const portal = "/org/freedesktop/portal/desktop";
char const* const request = "/org/freedesktop/portal/desktop/request/1";

constexpr auto all = QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals;

}

TestDesktop::TestDesktop(QDBusConnection const& bus) : bus_(bus) {
    bus_.registerObject(notifications, this, all);
    bus_.registerService("org.freedesktop.Notifications");
}

TestDesktop::~TestDesktop() {
    bus_.unregisterService("org.freedesktop.Notifications");
    bus_.unregisterObject(notifications);
}

uint TestDesktop::Notify(QString const&, uint, QString const&, QString const& title, QString const& text,
                         QStringList const& actions, QVariantMap const&, int) {
    shown.push_back(title + ": " + text + " [" + actions.join(' ') + "]");
    return static_cast<uint>(shown.size());
}

void TestDesktop::press(uint number) { Q_EMIT ActionInvoked(number, "show"); }

void TestDesktop::close(uint number) { Q_EMIT NotificationClosed(number, 2); }

TestInhibit::TestInhibit(QDBusConnection const& bus) : bus_(bus) {
    bus_.registerObject(portal, this, all);
    bus_.registerService("org.freedesktop.portal.Desktop");
}

TestInhibit::~TestInhibit() {
    bus_.unregisterService("org.freedesktop.portal.Desktop");
    bus_.unregisterObject(portal);
    bus_.unregisterObject(request);
}

QDBusObjectPath TestInhibit::Inhibit(QString const&, uint flags, QVariantMap const& options) {
    asked.push_back(QString::number(flags) + ": " + options.value("reason").toString());
    request_ = new TestRequest(*this);
    bus_.unregisterObject(request);
    bus_.registerObject(request, request_, all);
    return QDBusObjectPath(request);
}

}
