#include <Tavaro/Studio/Files/FileTypes.h>

#include <Tavaro/Studio/Files/FileChoice.h>
#include <Tavaro/Studio/Files/FolderRows.h>

#include <QtQml>

namespace tavaro {

void registerFileTypes() {
    qmlRegisterType<FileChoice>("Tavaro.Files", 1, 0, "FileChoice");
    qmlRegisterType<FolderRows>("Tavaro.Files", 1, 0, "FolderRows");
}

}
