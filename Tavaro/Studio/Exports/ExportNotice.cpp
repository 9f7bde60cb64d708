#include <Tavaro/Studio/Exports/ExportNotice.h>

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <utility>

namespace tavaro {

namespace {

QString const service = QStringLiteral("org.freedesktop.Notifications");
QString const path = QStringLiteral("/org/freedesktop/Notifications");
QString const showFile = QStringLiteral("show");

constexpr int awaited = 20000; // milliseconds for which somebody may answer

}

ExportNotice::ExportNotice(QDBusConnection const& bus) : bus_(bus) {
    patience_.setSingleShot(true);
    patience_.setInterval(awaited);
}

/// Once there is something to answer.
void ExportNotice::listen() {
    if (std::exchange(isListening_, true)) return;
    bus_.connect(service, path, service, QStringLiteral("ActionInvoked"), this, SLOT(act(uint, QString)));
    bus_.connect(service, path, service, QStringLiteral("NotificationClosed"), this, SLOT(forget(uint, uint)));
}

void ExportNotice::tell(QString const& title, QString const& text, QString const& file) {
    listen();
    constexpr uint anew = 0;
    constexpr int asTheDesktopLikes = -1;
    auto call = QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    QStringList actions;
    if (!file.isEmpty()) actions << showFile << QStringLiteral("Show in folder");
    call << QStringLiteral("Tavaro") << anew << QStringLiteral("com.tavaro.Tavaro") << title << text << actions
         << QVariantMap{{QStringLiteral("desktop-entry"), QStringLiteral("com.tavaro.Tavaro")}} << asTheDesktopLikes;
    auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, file] {
        QDBusPendingReply<uint> const number = *answer;
        answer->deleteLater();
        if (number.isError() || file.isEmpty()) return;
        files_[number.value()] = file;
        patience_.start();
    });
}

void ExportNotice::act(uint number, QString const& action) {
    auto const found = files_.find(number);
    if (found != files_.end() && action == showFile) Q_EMIT showRequested(found->second);
}

void ExportNotice::forget(uint number, uint) {
    files_.erase(number);
    if (files_.empty()) patience_.stop();
}

}
