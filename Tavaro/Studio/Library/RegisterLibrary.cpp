#include <Tavaro/Studio/Library/RegisterLibrary.h>

#include <Tavaro/Studio/Library/Library.h>
#include <Tavaro/Studio/Library/Stills.h>

#include <QtQml>

namespace tavaro {

void registerLibrary(QQmlEngine& engine, Library& library) {
    engine.addImageProvider(QStringLiteral("stills"), new Stills); // the engine's
    qmlRegisterSingletonInstance("Tavaro.Library", 1, 0, "Library", &library);
}

}
