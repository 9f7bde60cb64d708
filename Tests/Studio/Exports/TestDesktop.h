#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace tavaro {

/// What a desktop has for programs that work unwatched: notifications, and a portal that keeps the machine awake.
class TestDesktop : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    explicit TestDesktop(QDBusConnection const& bus);
    ~TestDesktop() override;

    QStringList shown; // "title: text [actions]"
    void press(uint number);
    void close(uint number);

public Q_SLOTS:
    uint Notify(QString const& program, uint instead, QString const& icon, QString const& title, QString const& text,
                QStringList const& actions, QVariantMap const& hints, int milliseconds);

Q_SIGNALS:
    void ActionInvoked(uint number, QString const& action);
    void NotificationClosed(uint number, uint reason);

private:
    QDBusConnection bus_;
};

/// The portal that keeps the machine awake.
class TestInhibit : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")

public:
    explicit TestInhibit(QDBusConnection const& bus);
    ~TestInhibit() override;

    QStringList asked; // "flags: reason"
    bool isHeld() const { return request_ != nullptr; }

public Q_SLOTS:
    QDBusObjectPath Inhibit(QString const& window, uint flags, QVariantMap const& options);

private:
    QDBusConnection bus_;
    QObject* request_ = nullptr;
    friend class TestRequest;
};

/// A promise of the portal, until it is closed.
class TestRequest : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")

public:
    explicit TestRequest(TestInhibit& portal) : QObject(&portal), portal_(portal) {}

public Q_SLOTS:
    void Close() { portal_.request_ = nullptr; }

private:
    TestInhibit& portal_;
};

}
