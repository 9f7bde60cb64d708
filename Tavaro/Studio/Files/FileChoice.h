#pragma once

#include <Tavaro/Studio/Files/PortalFiles.h>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>

namespace tavaro {

/// Somebody is to choose files, a place to save one, or a folder: in the desktop's own dialog where it has one, else in
/// ours, which the page opens when `ownWanted`.
class FileChoice : public QObject {
    Q_OBJECT
    Q_PROPERTY(Mode mode MEMBER mode_ NOTIFY setUp)
    Q_PROPERTY(QString title MEMBER title_ NOTIFY setUp)
    Q_PROPERTY(QStringList nameFilters MEMBER nameFilters_ NOTIFY setUp) // "Captions (*.srt *.vtt)"
    Q_PROPERTY(QString defaultSuffix MEMBER defaultSuffix_ NOTIFY setUp) // of a file that is saved; without the dot
    Q_PROPERTY(QUrl currentFile MEMBER currentFile_ NOTIFY setUp)        // what is offered
    Q_PROPERTY(QUrl currentFolder MEMBER currentFolder_ NOTIFY setUp)
    Q_PROPERTY(QUrl selectedFile READ selectedFile NOTIFY accepted)
    Q_PROPERTY(QUrl selectedFolder READ selectedFile NOTIFY accepted)
    Q_PROPERTY(QList<QUrl> selectedFiles READ selectedFiles NOTIFY accepted)
    Q_PROPERTY(QQuickWindow* window READ window NOTIFY ownWanted)

public:
    enum Mode { OpenFile, OpenFiles, SaveFile, OpenFolder };
    Q_ENUM(Mode)

    explicit FileChoice(QObject* parent = nullptr) : QObject(parent) {}
    /// Whose desktop is asked; else that of the session.
    void setPortal(std::unique_ptr<PortalFiles> portal);

    Q_INVOKABLE void open();
    QUrl selectedFile() const { return selected_.empty() ? QUrl() : selected_.front(); }
    QList<QUrl> const& selectedFiles() const { return selected_; }
    QQuickWindow* window() const { return window_; }

    // For our own dialog.

    Q_INVOKABLE QString beginFolder() const;
    Q_INVOKABLE QString beginName() const;
    /// The patterns of a name filter; none for every file.
    Q_INVOKABLE static QStringList globsOf(QString const& filter);
    /// The path of a file that is to be saved: with the suffix, where it has none.
    Q_INVOKABLE QString withSuffix(QString const& path) const;
    /// What there is to say before a path is taken; empty for nothing.
    Q_INVOKABLE QString remark(QString const& path) const;
    /// Why it cannot be taken; empty where it can.
    Q_INVOKABLE QString problem(QString const& path) const;
    Q_INVOKABLE void take(QStringList const& paths);

Q_SIGNALS:
    void setUp();
    void accepted();
    void rejected();
    void ownWanted();

private:
    FileQuestion question() const;
    void take(QList<QUrl> const& files);

    Mode mode_ = OpenFile;
    QString title_, defaultSuffix_;
    QStringList nameFilters_;
    QUrl currentFile_, currentFolder_;
    QList<QUrl> selected_;
    QPointer<QQuickWindow> window_;
    std::unique_ptr<PortalFiles> portal_;
};

}
