#pragma once

#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QString>

namespace tavaro {

/// What a tray asks of its item, by the names that the desktops agreed on.
class TrayFace : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)

public:
    TrayFace(QObject& item, RecorderModel& recorder);

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return QStringLiteral("tavaro"); }
    QString title() const;
    QString status() const { return QStringLiteral("Active"); } // else trays hide its menu, by which a take begins
    QString iconName() const;
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const { return QDBusObjectPath(QStringLiteral("/StatusNotifierMenu")); }

public Q_SLOTS:
    void Activate(int x, int y);          // NOLINT(readability-identifier-naming): as are the next
    void SecondaryActivate(int x, int y); // NOLINT(readability-identifier-naming)
    void ContextMenu(int x, int y);       // NOLINT(readability-identifier-naming)

Q_SIGNALS:
    void NewTitle(); // NOLINT(readability-identifier-naming)
    void NewIcon();  // NOLINT(readability-identifier-naming)
    void windowWanted();

private:
    void follow();

    RecorderModel& recorder_;
    RecorderModel::Phase phase_ = RecorderModel::Idle;
};

}
