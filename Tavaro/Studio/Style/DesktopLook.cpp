#include <Tavaro/Studio/Style/DesktopLook.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QSettings>
#include <QStandardPaths>

namespace tavaro {

namespace {

QString const service = QStringLiteral("org.freedesktop.portal.Desktop");
QString const path = QStringLiteral("/org/freedesktop/portal/desktop");
QString const settings = QStringLiteral("org.freedesktop.portal.Settings");
QString const appearance = QStringLiteral("org.freedesktop.appearance");
QString const scheme = QStringLiteral("color-scheme");

std::optional<LookWish> gtkOfThisUser() {
    auto const theme = qEnvironmentVariable("GTK_THEME");
    if (!theme.isEmpty()) return theme.endsWith(QStringLiteral("dark")) ? LookWish::dark : LookWish::light;
    auto const folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    for (auto const* const version : {"/gtk-4.0", "/gtk-3.0"}) {
        if (auto const wish = DesktopLook::wishOfGTK(folder + QLatin1String(version) + QStringLiteral("/settings.ini")))
            return wish;
    }
    return std::nullopt;
}

LookWish wishOf(QPalette const& palette) {
    constexpr int middle = 128;
    return palette.color(QPalette::Window).lightness() < middle ? LookWish::dark : LookWish::light;
}

}

std::optional<LookWish> DesktopLook::wishOfGTK(QString const& file) {
    if (!QFile::exists(file)) return std::nullopt;
    QSettings const values(file, QSettings::IniFormat);
    auto const isDark = values.value(QStringLiteral("Settings/gtk-application-prefer-dark-theme"));
    if (isDark.isValid())
        return isDark.toString() == QStringLiteral("1") || isDark.toBool() ? LookWish::dark : LookWish::light;
    auto const theme = values.value(QStringLiteral("Settings/gtk-theme-name")).toString();
    if (theme.endsWith(QStringLiteral("-dark"), Qt::CaseInsensitive)) return LookWish::dark;
    return std::nullopt;
}

DesktopLook::DesktopLook(QObject* parent) : QObject(parent), gtk_(gtkOfThisUser()) {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.connect(service, path, settings, QStringLiteral("SettingChanged"), this,
                SLOT(note(QString, QString, QDBusVariant)));
    ask("Read");
}

LookWish DesktopLook::wish() const {
    if (told_) return *told_;
    return gtk_ ? *gtk_ : wishOf(QGuiApplication::palette());
}

void DesktopLook::ask(char const* method) {
    auto message = QDBusMessage::createMethodCall(service, path, settings, QLatin1String(method));
    message.setArguments({appearance, scheme});
    auto* const call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &DesktopLook::answered);
}

void DesktopLook::answered(QDBusPendingCallWatcher* call) {
    QDBusPendingReply<QDBusVariant> const reply = *call;
    call->deleteLater();
    if (reply.isValid()) take(reply.value().variant());
}

void DesktopLook::note(QString const& group, QString const& key, QDBusVariant const& value) {
    if (group == appearance && key == scheme) take(value.variant());
}

void DesktopLook::take(QVariant value) {
    // The portal's `Read` wraps the value twice.
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    constexpr unsigned dark = 1, light = 2; // 0 is no preference
    auto const said = value.toUInt();
    auto const before = wish();
    told_.reset();
    if (said == dark) told_ = LookWish::dark;
    if (said == light) told_ = LookWish::light;
    if (wish() != before) Q_EMIT changed();
}

}
