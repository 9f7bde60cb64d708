#include <Tavaro/Studio/Files/FileChoice.h>

#include <QFileInfo>
#include <QGuiApplication>
#include <QRegularExpression>

#include <utility>

namespace tavaro {

namespace {

/// Where the user works; none in a program without windows.
QQuickWindow* windowInUse() {
    if (auto* const window = qobject_cast<QQuickWindow*>(QGuiApplication::focusWindow())) return window;
    for (auto* const window : QGuiApplication::topLevelWindows()) {
        auto* const quick = qobject_cast<QQuickWindow*>(window);
        if (quick && quick->isVisible() && !quick->flags().testFlag(Qt::WindowDoesNotAcceptFocus)) return quick;
    }
    return nullptr;
}

FilePurpose purposeOf(FileChoice::Mode mode) {
    switch (mode) {
    case FileChoice::OpenFiles: return FilePurpose::openSeveral;
    case FileChoice::SaveFile: return FilePurpose::save;
    case FileChoice::OpenFolder: return FilePurpose::folder;
    case FileChoice::OpenFile: break;
    }
    return FilePurpose::open;
}

}

void FileChoice::setPortal(std::unique_ptr<PortalFiles> portal) {
    portal_ = std::move(portal);
    connect(portal_.get(), &PortalFiles::chosen, this, [this](QList<QUrl> const& files) { take(files); });
    connect(portal_.get(), &PortalFiles::cancelled, this, &FileChoice::rejected);
    connect(portal_.get(), &PortalFiles::unavailable, this, &FileChoice::ownWanted);
}

void FileChoice::open() {
    window_ = windowInUse();
    if (!portal_) setPortal(std::make_unique<PortalFiles>());
    if (portal_->isAsking()) return; // its dialog is there, or comes
    portal_->ask(question());
}

FileQuestion FileChoice::question() const {
    FileQuestion question{purposeOf(mode_), title_, {}, beginFolder(), beginName(), {}};
    for (auto const& filter : nameFilters_) {
        auto const globs = globsOf(filter);
        question.kinds.push_back(
            {filter.section(QStringLiteral(" ("), 0, 0), globs.empty() ? QStringList(QStringLiteral("*")) : globs});
    }
    if (window_ && QGuiApplication::platformName() == QLatin1String("xcb"))
        question.window = QStringLiteral("x11:%1").arg(window_->winId(), 0, 16);
    return question;
}

QString FileChoice::beginFolder() const {
    if (currentFile_.isLocalFile()) return QFileInfo(currentFile_.toLocalFile()).path();
    return currentFolder_.toLocalFile();
}

QString FileChoice::beginName() const {
    return mode_ == SaveFile ? QFileInfo(currentFile_.toLocalFile()).fileName() : QString();
}

QStringList FileChoice::globsOf(QString const& filter) {
    static QRegularExpression const patterns(QStringLiteral("\\(([^()]*)\\)\\s*$"));
    auto const globs = patterns.match(filter).captured(1).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return globs.contains(QStringLiteral("*")) ? QStringList() : globs;
}

QString FileChoice::withSuffix(QString const& path) const {
    bool const isWhole = mode_ != SaveFile || defaultSuffix_.isEmpty() || !QFileInfo(path).suffix().isEmpty();
    return isWhole ? path : path + QLatin1Char('.') + defaultSuffix_;
}

QString FileChoice::remark(QString const& path) const {
    QFileInfo const file(withSuffix(path));
    if (mode_ != SaveFile || !file.isFile()) return {};
    return tr("“%1” is there already, and will be replaced.").arg(file.fileName());
}

QString FileChoice::problem(QString const& path) const {
    QFileInfo const file(path);
    auto const name = file.fileName();
    if (mode_ == SaveFile) {
        if (file.isDir() || name.isEmpty()) return tr("The file needs a name.");
        QFileInfo const folder(file.path());
        if (!folder.isDir()) return tr("There is no folder “%1”.").arg(folder.filePath());
        return folder.isWritable() ? QString() : tr("Nothing can be saved in this folder.");
    }
    if (!file.exists()) return tr("There is no “%1” here.").arg(name);
    if (mode_ == OpenFolder && !file.isDir()) return tr("“%1” is not a folder.").arg(name);
    return file.isReadable() ? QString() : tr("“%1” may not be read.").arg(name);
}

void FileChoice::take(QStringList const& paths) {
    QList<QUrl> files;
    for (auto const& path : paths) files.push_back(QUrl::fromLocalFile(path));
    take(files);
}

/// Of the portal's too, which knows nothing of suffixes.
void FileChoice::take(QList<QUrl> const& files) {
    selected_.clear();
    for (auto const& file : files)
        selected_.push_back(file.isLocalFile() ? QUrl::fromLocalFile(withSuffix(file.toLocalFile())) : file);
    Q_EMIT accepted();
}

}
