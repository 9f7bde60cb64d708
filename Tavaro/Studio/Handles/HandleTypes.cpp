#include <Tavaro/Studio/Handles/HandleTypes.h>

#include <Tavaro/Studio/Handles/FilmHandles.h>

#include <QtQml>

namespace tavaro {

void registerHandleTypes() { qmlRegisterType<FilmHandles>("Tavaro.Editor", 1, 0, "FilmHandles"); }

}
