#include <Tavaro/Studio/Exports/ExportsDesk.h>

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Studio/Library/LibraryText.h>
#include <Tavaro/Studio/Library/ShowInFolder.h>

namespace tavaro {

ExportsDesk::ExportsDesk(MainQueue& queue, Application& application)
    : queue_(queue, application)
    , form_(queue, application.preferences(), queue_)
    , frames_(queue, application.frames())
    , guard_(QStringLiteral("A film is being exported")) {
    connect(&queue_, &ExportQueue::progressed, this, [this] { guard_.setHeld(queue_.activeCount() > 0); });
    connect(&queue_, &ExportQueue::ended, this, &ExportsDesk::tell);
    connect(&queue_, &ExportQueue::failed, this, &ExportsDesk::failed);
    connect(&notice_, &ExportNotice::showRequested, this,
            [](QString const& file) { showInFolder(libraryText::path(file)); });
    connect(&frames_, &FilmFrames::done, this, &ExportsDesk::say);
    connect(&frames_, &FilmFrames::failed, this, &ExportsDesk::failed);
}

/// In the window that the user looks at, else by the desktop.
void ExportsDesk::tell(int row) {
    auto const& record = queue_.record(row);
    auto const name = QString::fromStdString(record.name);
    bool const isDone = record.state == ExportState::done;
    auto const file = isDone ? QString::fromStdString(record.path) : QString();
    auto const title =
        (isDone ? QStringLiteral("“%1” is exported") : QStringLiteral("“%1” could not be exported")).arg(name);
    auto const checked = QString::fromStdString(record.checked).section(QLatin1Char('\n'), 0, 0);
    if (isWatched_) return say(checked.isEmpty() ? title : QStringLiteral("%1. %2").arg(title, checked), file);
    auto const text =
        isDone ? libraryText::text(libraryText::path(file).filename()) : QString::fromStdString(record.sentence);
    notice_.tell(title, checked.isEmpty() ? text : text + QLatin1Char('\n') + checked, file);
}

void ExportsDesk::say(QString const& text, QString const& file) {
    file_ = file;
    Q_EMIT said(text, file.isEmpty() ? QString() : QStringLiteral("Show in folder"));
}

void ExportsDesk::accept() {
    if (!file_.isEmpty()) showInFolder(libraryText::path(file_));
}

}
