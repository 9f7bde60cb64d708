#include <Tavaro/Studio/Style/RegisterStyle.h>

#include <Tavaro/Studio/Style/Reach.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <QFont>
#include <QGuiApplication>
#include <QQuickStyle>
#include <QtQml>

namespace tavaro {

void registerStyle(Theme& theme) {
    QFont font(theme.face);
    font.setPixelSize(theme.bodySize);
    QGuiApplication::setFont(font);
    qmlRegisterSingletonInstance("Tavaro.Theme", 1, 0, "Theme", &theme);
    qmlRegisterSingletonType<Reach>("Tavaro.Theme", 1, 0, "Reach", [](QQmlEngine*, QJSEngine*) { return new Reach; });
    QQuickStyle::setStyle(QStringLiteral("Tavaro.Style"));
}

}
