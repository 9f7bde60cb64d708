#include <Tavaro/Studio/Recorder/TrayItem.h>

#include <Tavaro/Studio/Recorder/TrayFace.h>
#include <Tavaro/Studio/Recorder/TrayMenu.h>

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <unistd.h>

namespace tavaro {

namespace {

QString const watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
QString const itemPath = QStringLiteral("/StatusNotifierItem");
QString const menuPath = QStringLiteral("/StatusNotifierMenu");

}

TrayItem::TrayItem(RecorderModel& recorder, QDBusConnection const& bus)
    : bus_(bus)
    , name_(QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(::getpid()))
    , item_(std::make_unique<QObject>())
    , menu_(std::make_unique<QObject>())
    , trays_(watcher, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    auto* const face = new TrayFace(*item_, recorder); // the item's
    connect(face, &TrayFace::windowWanted, this, &TrayItem::windowWanted);
    auto* const menu = new TrayMenu(*menu_, recorder); // likewise
    connect(menu, &TrayMenu::libraryWanted, this, &TrayItem::libraryWanted);
    connect(menu, &TrayMenu::endWanted, this, &TrayItem::endWanted);
    connect(&trays_, &QDBusServiceWatcher::serviceRegistered, this, &TrayItem::offer);
    connect(&trays_, &QDBusServiceWatcher::serviceUnregistered, this, [this] { set(false); });
    bool const isOnBus = bus_.isConnected() && bus_.registerObject(itemPath, item_.get()) &&
                         bus_.registerObject(menuPath, menu_.get()) && bus_.registerService(name_);
    if (isOnBus) offer();
}

TrayItem::~TrayItem() {
    bus_.unregisterService(name_);
    bus_.unregisterObject(itemPath);
    bus_.unregisterObject(menuPath);
}

/// Without waiting: a desktop without a tray says so at once, and one that is busy later.
void TrayItem::offer() {
    auto call = QDBusMessage::createMethodCall(watcher, QStringLiteral("/StatusNotifierWatcher"), watcher,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    call << name_;
    call.setAutoStartService(false);
    auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        set(!QDBusPendingReply<>(*answer).isError());
        answer->deleteLater();
    });
}

void TrayItem::set(bool isThere) {
    if (isThere == isThere_) return;
    isThere_ = isThere;
    Q_EMIT changed();
}

}
