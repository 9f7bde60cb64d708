#pragma once

#include <Tavaro/Studio/Lists/RowsModel.h>

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

namespace tavaro {

/// What is in a folder, for who chooses in there: folders first, then files of some names, both by their names. Hidden
/// ones are left out. Roles: `name`, `path`, `isFolder`, `detail`.
class FolderRows : public RowsModel {
    Q_OBJECT
    Q_PROPERTY(QString folder READ folder WRITE setFolder NOTIFY changed)
    Q_PROPERTY(QString shownFolder READ shownFolder NOTIFY changed)           // "~/Films"
    Q_PROPERTY(QStringList globs MEMBER globs_ WRITE setGlobs NOTIFY changed) // none: every file
    Q_PROPERTY(bool hasFiles MEMBER hasFiles_ WRITE setHasFiles NOTIFY changed)
    Q_PROPERTY(QString parentFolder READ parentFolder NOTIFY changed) // empty at the root
    Q_PROPERTY(QString problem READ problem NOTIFY changed)           // why it cannot be looked into

public:
    QString const& folder() const { return folder_; }
    /// One that is not there is its nearest parent that is.
    void setFolder(QString const& path);
    QString shownFolder() const;
    void setGlobs(QStringList const& globs);
    void setHasFiles(bool hasFiles);
    QString parentFolder() const;
    QString problem() const;
    /// What somebody typed, as a path: from this folder, from the home folder ("~/Films") or from the root; nothing is
    /// this folder.
    Q_INVOKABLE QString resolved(QString const& typed) const;
    Q_INVOKABLE static bool isFolder(QString const& path) { return QFileInfo(path).isDir(); }
    Q_INVOKABLE static QString home();
    /// The row of a path; -1 for none.
    Q_INVOKABLE int rowOf(QString const& path) const;

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void changed();

private:
    void read();

    QString folder_;
    QStringList globs_;
    bool hasFiles_ = true;
    QList<QFileInfo> entries_;
};

}
