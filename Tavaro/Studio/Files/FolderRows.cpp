#include <Tavaro/Studio/Files/FolderRows.h>

#include <QDateTime>
#include <QDir>
#include <QLocale>

#include <algorithm>

namespace tavaro {

namespace {

constexpr int nameRole = Qt::UserRole + 1, pathRole = nameRole + 1, isFolderRole = nameRole + 2,
              detailRole = nameRole + 3;

QString detailOf(QFileInfo const& entry) {
    QLocale const locale;
    auto const when = locale.toString(entry.lastModified().date(), QLocale::ShortFormat);
    return entry.isDir() ? when : locale.formattedDataSize(entry.size()) + QStringLiteral(" · ") + when;
}

}

void FolderRows::setFolder(QString const& path) {
    QDir folder(path.isEmpty() ? QDir::homePath() : path);
    while (!folder.exists() && !folder.isRoot()) folder.setPath(QFileInfo(folder.absolutePath()).path());
    folder_ = QDir::cleanPath(folder.absolutePath());
    read();
}

QString FolderRows::shownFolder() const {
    auto const home = QDir::homePath();
    bool const isInside = folder_ == home || folder_.startsWith(home + QLatin1Char('/'));
    return isInside ? QLatin1Char('~') + folder_.mid(home.size()) : folder_;
}

void FolderRows::setGlobs(QStringList const& globs) {
    globs_ = globs;
    read();
}

void FolderRows::setHasFiles(bool hasFiles) {
    hasFiles_ = hasFiles;
    read();
}

void FolderRows::read() {
    if (folder_.isEmpty()) return; // not yet
    auto const wanted = QDir::AllDirs | QDir::NoDotAndDotDot | (hasFiles_ ? QDir::Files : QDir::Filters());
    beginResetModel();
    entries_ = QDir(folder_).entryInfoList(globs_, wanted, QDir::DirsFirst | QDir::IgnoreCase | QDir::LocaleAware);
    endResetModel();
    Q_EMIT countChanged();
    Q_EMIT changed();
}

QString FolderRows::parentFolder() const {
    return folder_.isEmpty() || QDir(folder_).isRoot() ? QString() : QFileInfo(folder_).path();
}

QString FolderRows::problem() const {
    QFileInfo const folder(folder_);
    if (folder_.isEmpty() || (folder.isReadable() && folder.isExecutable())) return {};
    return tr("You may not look into this folder.");
}

QString FolderRows::resolved(QString const& typed) const {
    auto text = typed.trimmed();
    if (text == QLatin1String("~") || text.startsWith(QLatin1String("~/"))) text.replace(0, 1, QDir::homePath());
    return QDir::cleanPath(QDir(folder_).absoluteFilePath(text));
}

QString FolderRows::home() { return QDir::homePath(); }

int FolderRows::rowOf(QString const& path) const {
    auto const found = std::ranges::find(entries_, path, [](QFileInfo const& entry) { return entry.filePath(); });
    return found == entries_.end() ? -1 : static_cast<int>(found - entries_.begin());
}

int FolderRows::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

QHash<int, QByteArray> FolderRows::roleNames() const {
    return {{nameRole, "name"}, {pathRole, "path"}, {isFolderRole, "isFolder"}, {detailRole, "detail"}};
}

QVariant FolderRows::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& entry = entries_.at(index.row());
    switch (role) {
    case nameRole:
    case Qt::DisplayRole: return entry.fileName();
    case pathRole: return entry.filePath();
    case isFolderRole: return entry.isDir();
    case detailRole: return detailOf(entry);
    default: return {};
    }
}

}
