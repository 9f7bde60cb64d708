#pragma once

#include <Tavaro/Studio/Recorder/RecorderModel.h>

#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <vector>

namespace tavaro {

/// An item of a menu with what is below it, as trays read it.
struct TrayMenuItem {
    int id = 0; // 0: the menu itself
    QVariantMap properties;
    QList<TrayMenuItem> items;
};
struct TrayMenuProperties {
    int id = 0;
    QVariantMap properties;
};
struct TrayMenuEvent {
    int id = 0;
    QString event;
    QDBusVariant data;
    uint time = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, TrayMenuItem const& item);
QDBusArgument const& operator>>(QDBusArgument const& argument, TrayMenuItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, TrayMenuProperties const& item);
QDBusArgument const& operator>>(QDBusArgument const& argument, TrayMenuProperties& item);
QDBusArgument& operator<<(QDBusArgument& argument, TrayMenuEvent const& event);
QDBusArgument const& operator>>(QDBusArgument const& argument, TrayMenuEvent& event);

/// The menu of the tray's item, by the names that the desktops agreed on: the recorder's orders as they fit just now,
/// the library, the end of the program.
class TrayMenu : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    TrayMenu(QObject& item, RecorderModel& recorder);

    uint version() const { return 3; }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming)
    uint GetLayout(int parent, int depth, QStringList const& names, tavaro::TrayMenuItem& layout);
    QList<tavaro::TrayMenuProperties> GetGroupProperties(QList<int> const& ids, QStringList const& names);
    QDBusVariant GetProperty(int id, QString const& name);
    void Event(int id, QString const& event, QDBusVariant const& data, uint time);
    QList<int> EventGroup(QList<tavaro::TrayMenuEvent> const& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(QList<int> const& ids, QList<int>& unknown);

Q_SIGNALS:
    void LayoutUpdated(uint revision, int parent);
    // NOLINTEND(readability-identifier-naming)
    void libraryWanted();
    void endWanted();

private:
    struct Entry {
        QString label; // empty: a line between others
        bool isEnabled = true;
        std::function<void()> action;
    };

    std::vector<Entry> entries();
    QVariantMap propertiesOf(Entry const& entry) const;
    void follow();

    RecorderModel& recorder_;
    RecorderModel::Phase phase_ = RecorderModel::Idle;
    uint revision_ = 1;
};

}

Q_DECLARE_METATYPE(tavaro::TrayMenuItem)
Q_DECLARE_METATYPE(tavaro::TrayMenuProperties)
Q_DECLARE_METATYPE(tavaro::TrayMenuEvent)
