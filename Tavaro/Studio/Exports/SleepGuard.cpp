#include <Tavaro/Studio/Exports/SleepGuard.h>

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <utility>

namespace tavaro {

namespace {

QString const portal = QStringLiteral("org.freedesktop.portal.Desktop");
QString const logins = QStringLiteral("org.freedesktop.login1");

}

SleepGuard::SleepGuard(QString reason, QDBusConnection const& session, std::function<QDBusConnection()> system)
    : reason_(std::move(reason))
    , session_(session)
    , system_(std::move(system)) {}

SleepGuard::~SleepGuard() { release(); }

void SleepGuard::setHeld(bool isHeld) {
    if (isHeld == isHeld_) return;
    isHeld_ = isHeld;
    if (isHeld)
        askPortal();
    else
        release();
}

void SleepGuard::askPortal() {
    constexpr uint suspend = 4;
    auto call =
        QDBusMessage::createMethodCall(portal, QStringLiteral("/org/freedesktop/portal/desktop"),
                                       QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
    call << QString() << suspend << QVariantMap{{QStringLiteral("reason"), reason_}};
    auto* const answer = new QDBusPendingCallWatcher(session_.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, number = ++asked_] {
        QDBusPendingReply<QDBusObjectPath> const reply = *answer;
        answer->deleteLater();
        if (reply.isError()) {
            if (number == asked_ && isHeld_) askLoginService();
            return;
        }
        request_ = reply.value();
        if (number != asked_ || !isHeld_) return release();
        Q_EMIT changed();
    });
}

void SleepGuard::askLoginService() {
    auto call =
        QDBusMessage::createMethodCall(logins, QStringLiteral("/org/freedesktop/login1"),
                                       QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QStringLiteral("sleep:idle") << QStringLiteral("Tavaro") << reason_ << QStringLiteral("block");
    auto* const answer = new QDBusPendingCallWatcher(system_().asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, number = ++asked_] {
        QDBusPendingReply<QDBusUnixFileDescriptor> const reply = *answer;
        answer->deleteLater();
        if (reply.isError() || number != asked_ || !isHeld_) return;
        lock_ = reply.value();
        Q_EMIT changed();
    });
}

void SleepGuard::release() {
    lock_ = {};
    if (auto const request = std::exchange(request_, std::nullopt)) {
        auto const call = QDBusMessage::createMethodCall(
            portal, request->path(), QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Close"));
        session_.send(call);
    }
    Q_EMIT changed();
}

}
