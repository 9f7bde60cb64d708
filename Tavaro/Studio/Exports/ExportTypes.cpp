#include <Tavaro/Studio/Exports/ExportTypes.h>

#include <Tavaro/Studio/Exports/ExportsDesk.h>

#include <QtQml>

namespace tavaro {

namespace {

template<class Type> void announce(char const* name) {
    qmlRegisterUncreatableType<Type>("Tavaro.Exports", 1, 0, name, QStringLiteral("The program makes it."));
}

}

void registerExportTypes() {
    announce<ExportsDesk>("ExportsDesk");
    announce<ExportQueue>("ExportQueue");
    announce<ExportForm>("ExportForm");
    announce<FilmFrames>("FilmFrames");
}

}
