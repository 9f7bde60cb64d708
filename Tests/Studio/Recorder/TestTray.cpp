#include "TestTray.h"

namespace tavaro {

TestTray::TestTray(QDBusConnection const& bus) : bus_(bus) {
    bus_.registerObject("/StatusNotifierWatcher", this, QDBusConnection::ExportAllSlots);
    bus_.registerService("org.kde.StatusNotifierWatcher");
}

TestTray::~TestTray() {
    bus_.unregisterService("org.kde.StatusNotifierWatcher");
    bus_.unregisterObject("/StatusNotifierWatcher");
}

}
