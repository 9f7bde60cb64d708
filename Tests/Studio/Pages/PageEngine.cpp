#include "PageEngine.h"

#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Studio/Desk/DeskTypes.h>
#include <Tavaro/Studio/Style/RegisterStyle.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <QQmlEngine>
#include <QQuickWindow>

namespace tavaro {

namespace {

struct Surroundings {
    Surroundings() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        registerStyle(theme);
        registerDeskTypes();
        engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    }

    TemporaryFolder folder{TemporaryFolder::fastest()};
    Preferences preferences{folder / "preferences.json"};
    DesktopLook desktop;
    Theme theme{preferences, desktop};
    QQmlEngine engine;
};

}

QQmlEngine& pageEngine() {
    static auto* const all = new Surroundings;
    return all->engine;
}

}
