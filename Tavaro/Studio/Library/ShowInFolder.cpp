#include <Tavaro/Studio/Library/ShowInFolder.h>

#include <Tavaro/Studio/Library/LibraryText.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

namespace tavaro {

void showInFolder(std::filesystem::path const& file) {
    auto const url = QUrl::fromLocalFile(libraryText::text(file));
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    message.setArguments({QStringList{url.toString(QUrl::FullyEncoded)}, QString()});
    auto const call = QDBusConnection::sessionBus().asyncCall(message);
    auto* const watcher = new QDBusPendingCallWatcher(call, qGuiApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, [watcher, file] {
        if (watcher->isError()) QDesktopServices::openUrl(QUrl::fromLocalFile(libraryText::text(file.parent_path())));
        watcher->deleteLater();
    });
}

}
