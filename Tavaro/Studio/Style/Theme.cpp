#include <Tavaro/Studio/Style/Theme.h>

#include <TavaroCore/Errors/Error.h>

#include <spdlog/spdlog.h>

namespace tavaro {

namespace {

QString const light = QStringLiteral("light"), dark = QStringLiteral("dark"), desktops = QStringLiteral("desktop");

QString chosen(Preferences& preferences) {
    auto const name = QString::fromStdString(preferences.get(interfaceLook));
    return name == light || name == dark ? name : desktops;
}

}

Theme::Theme(Preferences& preferences, DesktopLook& desktop)
    : preferences_(preferences)
    , desktop_(desktop)
    , look_(chosen(preferences))
    , observation_(preferences.observe([this] { take(chosen(preferences_)); })) {
    connect(&desktop_, &DesktopLook::changed, this, &Theme::apply);
    apply();
}

void Theme::setLook(QString const& look) {
    if (look == look_) return;
    try {
        preferences_.set(interfaceLook, look.toStdString());
    } catch (Error const& error) {
        spdlog::warn("{}", error.what());
    }
    take(look);
}

void Theme::take(QString const& look) {
    if (look == look_) return;
    look_ = look;
    apply();
}

QString Theme::literal(QString text) {
    text.replace(QLatin1Char('&'), QStringLiteral("&&"));
    return text.replace(QLatin1Char('<'), QStringLiteral("<\u200B")); // no tag begins with a blank of no width
}

QUrl Theme::icon(QString const& name) {
    return QUrl(QStringLiteral("qrc:/qt/qml/Tavaro/Style/Icons/") + name + QStringLiteral(".svg"));
}

void Theme::apply() {
    isDark_ = look_ == dark || (look_ == desktops && desktop_.wish() == LookWish::dark);
    colors_ = isDark_ ? ThemeColors::dark() : ThemeColors::light();
    Q_EMIT changed();
}

}
