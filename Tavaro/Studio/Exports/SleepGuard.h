#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <utility>

namespace tavaro {

/// Keeps the machine from going to sleep by itself while it is held: by the session's portal, else by the system's
/// login service, where either answers. Asks without waiting. Main thread.
class SleepGuard final : public QObject {
    Q_OBJECT

public:
    explicit SleepGuard(QString reason)
        : SleepGuard(std::move(reason), QDBusConnection::sessionBus(), QDBusConnection::systemBus) {}
    /// The system's bus is connected to once it is needed.
    SleepGuard(QString reason, QDBusConnection const& session, std::function<QDBusConnection()> system);
    ~SleepGuard() override;

    void setHeld(bool isHeld);
    /// Whether somebody has promised it.
    bool isKept() const { return request_.has_value() || lock_.isValid(); }

Q_SIGNALS:
    void changed();

private:
    void askPortal();
    void askLoginService();
    void release();

    QString const reason_;
    QDBusConnection session_;
    std::function<QDBusConnection()> const system_;
    bool isHeld_ = false;
    int asked_ = 0;                          // answers to what was asked before count no more
    std::optional<QDBusObjectPath> request_; // of the portal, while it stands
    QDBusUnixFileDescriptor lock_;           // of the login service, which closing ends
};

}
