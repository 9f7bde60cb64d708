#pragma once

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

namespace tavaro {

/// What a file is chosen for.
enum class FilePurpose { open, openSeveral, save, folder };

/// Files of one kind: "Captions", {"*.srt", "*.vtt"}.
struct FileKind {
    QString title;
    QStringList globs;
};

/// What is asked for. Paths are absolute; an empty one leaves the choice to who is asked.
struct FileQuestion {
    FilePurpose purpose = FilePurpose::open;
    QString title;
    QList<FileKind> kinds;
    QString folder, name; // where it begins, and what a file to be saved would be called
    QString window;       // whose dialog it is, as portals name windows
};

/// The desktop's own dialog for files, by the session's portal. Asks without waiting; one answer for each question, and
/// none to one that was asked before another. Main thread.
class PortalFiles final : public QObject {
    Q_OBJECT

public:
    PortalFiles() : PortalFiles(QDBusConnection::sessionBus()) {}
    explicit PortalFiles(QDBusConnection const& session);
    /// What was asked is put away.
    ~PortalFiles() override;

    void ask(FileQuestion const& question);
    bool isAsking() const { return !request_.isEmpty(); }

Q_SIGNALS:
    void chosen(QList<QUrl> const& files);
    void cancelled();
    /// This desktop has no such dialog, or it failed.
    void unavailable();

private Q_SLOTS:
    void respond(uint response, QVariantMap const& results);

private:
    void listenTo(QString const& request);
    void forget();

    QDBusConnection session_;
    QString request_; // empty: nothing is asked
    int asked_ = 0;
};

}
