#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

namespace tavaro {

/// A desktop's tray, for as long as the object lives.
class TestTray : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")

public:
    explicit TestTray(QDBusConnection const& bus);
    ~TestTray() override;

    QString item; // the name on the bus of the last that came

public Q_SLOTS:
    void RegisterStatusNotifierItem(QString const& service) { item = service; }

private:
    QDBusConnection bus_;
};

}
