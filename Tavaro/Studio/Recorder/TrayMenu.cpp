#include <Tavaro/Studio/Recorder/TrayMenu.h>

#include <QDBusMetaType>

namespace tavaro {

QDBusArgument& operator<<(QDBusArgument& argument, TrayMenuItem const& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (auto const& below : item.items) argument << QDBusVariant(QVariant::fromValue(below));
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument const& operator>>(QDBusArgument const& argument, TrayMenuItem& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant below;
        argument >> below;
        item.items.push_back(qdbus_cast<TrayMenuItem>(below.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, TrayMenuProperties const& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument const& operator>>(QDBusArgument const& argument, TrayMenuProperties& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, TrayMenuEvent const& event) {
    argument.beginStructure();
    argument << event.id << event.event << event.data << event.time;
    argument.endStructure();
    return argument;
}

QDBusArgument const& operator>>(QDBusArgument const& argument, TrayMenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.event >> event.data >> event.time;
    argument.endStructure();
    return argument;
}

TrayMenu::TrayMenu(QObject& item, RecorderModel& recorder) : QDBusAbstractAdaptor(&item), recorder_(recorder) {
    qDBusRegisterMetaType<TrayMenuItem>();
    qDBusRegisterMetaType<TrayMenuProperties>();
    qDBusRegisterMetaType<QList<TrayMenuProperties>>();
    qDBusRegisterMetaType<TrayMenuEvent>();
    qDBusRegisterMetaType<QList<TrayMenuEvent>>();
    qDBusRegisterMetaType<QList<int>>();
    connect(&recorder, &RecorderModel::changed, this, &TrayMenu::follow);
}

/// Always the same number of them, so that each keeps its own.
std::vector<TrayMenu::Entry> TrayMenu::entries() {
    bool const isIdle = phase_ == RecorderModel::Idle, isCountdown = phase_ == RecorderModel::Countdown;
    bool const isPaused = phase_ == RecorderModel::Paused;
    bool const isTaking = isPaused || phase_ == RecorderModel::Recording;
    return {
        {tr("Record"), isIdle, [this] { recorder_.record(); }},
        {isCountdown ? tr("Cancel") : tr("Stop"), isTaking || isCountdown, [this] { recorder_.stop(); }},
        {isPaused ? tr("Resume") : tr("Pause"), isTaking, [this] { recorder_.togglePause(); }},
        {},
        {tr("Open library"), true, [this] { Q_EMIT libraryWanted(); }},
        {},
        {tr("Quit"), true, [this] { Q_EMIT endWanted(); }},
    };
}

QVariantMap TrayMenu::propertiesOf(Entry const& entry) const {
    if (entry.label.isEmpty()) return {{QStringLiteral("type"), QStringLiteral("separator")}};
    return {{QStringLiteral("label"), entry.label}, {QStringLiteral("enabled"), entry.isEnabled}};
}

uint TrayMenu::GetLayout(int parent, int depth, QStringList const& /*names*/, TrayMenuItem& layout) {
    layout.id = parent;
    if (parent != 0) return revision_;
    layout.properties = {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
    int id = 0;
    if (depth != 0)
        for (auto const& entry : entries()) layout.items.push_back({++id, propertiesOf(entry), {}});
    return revision_;
}

QList<TrayMenuProperties> TrayMenu::GetGroupProperties(QList<int> const& ids, QStringList const& /*names*/) {
    QList<TrayMenuProperties> all;
    int id = 0;
    for (auto const& entry : entries())
        if (++id; ids.isEmpty() || ids.contains(id)) all.push_back({id, propertiesOf(entry)});
    return all;
}

QDBusVariant TrayMenu::GetProperty(int id, QString const& name) {
    auto const all = entries();
    bool const isThere = id > 0 && static_cast<std::size_t>(id) <= all.size();
    return QDBusVariant(isThere ? propertiesOf(all[static_cast<std::size_t>(id - 1)]).value(name, QString())
                                : QVariant(QString()));
}

void TrayMenu::Event(int id, QString const& event, QDBusVariant const& /*data*/, uint /*time*/) {
    auto const all = entries();
    if (event != QStringLiteral("clicked") || id <= 0 || static_cast<std::size_t>(id) > all.size()) return;
    auto const& entry = all[static_cast<std::size_t>(id - 1)];
    if (entry.action && entry.isEnabled) entry.action();
}

QList<int> TrayMenu::EventGroup(QList<TrayMenuEvent> const& events) {
    for (auto const& event : events) Event(event.id, event.event, event.data, event.time);
    return {};
}

bool TrayMenu::AboutToShow(int /*id*/) { return false; }

QList<int> TrayMenu::AboutToShowGroup(QList<int> const& /*ids*/, QList<int>& /*unknown*/) { return {}; }

void TrayMenu::follow() {
    if (phase_ == recorder_.phase()) return;
    phase_ = recorder_.phase();
    Q_EMIT LayoutUpdated(++revision_, 0);
}

}
