#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace tavaro {

/// The desktop's portal for files, which answers at once as a test wants.
class TestFilePortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileChooser")

public:
    explicit TestFilePortal(QDBusConnection const& bus);
    ~TestFilePortal() override;

    uint response = 0;
    QVariantMap results;
    QStringList asked; // "method: title, options"

public Q_SLOTS:
    QDBusObjectPath OpenFile(QString const& window, QString const& title, QVariantMap const& options);
    QDBusObjectPath SaveFile(QString const& window, QString const& title, QVariantMap const& options);

private:
    QDBusObjectPath answer(QString const& what, QVariantMap const& options);

    QDBusConnection bus_;
};

}
