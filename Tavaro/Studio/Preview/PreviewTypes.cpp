#include <Tavaro/Studio/Preview/PreviewTypes.h>

#include <Tavaro/Studio/Preview/LookStillItem.h>
#include <Tavaro/Studio/Preview/PreviewItem.h>

#include <QtQml>

namespace tavaro {

void registerPreviewTypes() {
    auto const only = QStringLiteral("It belongs to an editor.");
    qmlRegisterType<PreviewItem>("Tavaro.Editor", 1, 0, "PreviewItem");
    qmlRegisterType<LookStillItem>("Tavaro.Editor", 1, 0, "LookStill");
    qmlRegisterUncreatableType<LookStills>("Tavaro.Editor", 1, 0, "LookStills", only);
    qmlRegisterUncreatableType<FilmPreview>("Tavaro.Editor", 1, 0, "FilmPreview", only);
    qmlRegisterUncreatableType<FilmPlayback>("Tavaro.Editor", 1, 0, "FilmPlayback", only);
}

}
