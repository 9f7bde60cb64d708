#include <Tavaro/Studio/Program/OpenedProjects.h>

#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Studio/Library/LibraryText.h>
#include <Tavaro/Studio/Privacy/PrivacyDesk.h>

#include <TavaroCore/Project/DemoProject.h>

#include <QQmlEngine>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

/// What a take was to be looked at for and was not, also by a program that ended in the middle.
bool takeUpScan(EditorDesk& desk) {
    auto& session = *desk.session();
    bool const isDue = DueScan::isDue(session.project().package(), session.document());
    return isDue && qobject_cast<PrivacyDesk*>(desk.privacy())->takeUp();
}

}

void OpenedProjects::open(QString const& package) {
    openAnd(package, [](EditorDesk& desk) { takeUpScan(desk); });
}

void OpenedProjects::openTake(QString const& package) {
    openAnd(package, [](EditorDesk& desk) {
        if (takeUpScan(desk)) desk.session()->setInspector(QStringLiteral("privacy")); // which shows how far it is
    });
}

void OpenedProjects::openAnd(QString const& package, std::function<void(EditorDesk&)> const& then) {
    projects_.open(libraryText::path(package), [this, then](Outcome<Opened> const& outcome) {
        try {
            add(outcome.value());
            then(rows_[static_cast<std::size_t>(rowOf(outcome.value().get()))]->desk);
        } catch (Error const& error) {
            Q_EMIT failed(QString::fromUtf8(error.what()));
        }
    });
}

void OpenedProjects::add(Opened const& project) {
    if (auto const row = rowOf(project.get()); row >= 0) return Q_EMIT opened(row);
    beginInsertRows({}, count(), count());
    auto observation = project->observe([this, project = project.get()](ProjectChange const&) { note(project); });
    rows_.emplace_back(new Row{preferences_, project, std::move(observation), {queue_, project}});
    QQmlEngine::setObjectOwnership(&rows_.back()->desk, QQmlEngine::CppOwnership);
    endInsertRows();
    Q_EMIT countChanged();
    Q_EMIT opened(count() - 1);
}

void OpenedProjects::close(int row) {
    if (row < 0 || row >= count()) return;
    if (auto const loss = rows_[static_cast<std::size_t>(row)]->closing.loss())
        return Q_EMIT failed(QString::fromStdString(*loss));
    remove(row);
}

void OpenedProjects::remove(int row) {
    beginRemoveRows({}, row, row);
    // Pages that show it are gone only when the loop is back, and look at it until then.
    QMetaObject::invokeMethod(
        this, [closed = std::shared_ptr<Row>(std::move(rows_[static_cast<std::size_t>(row)]))] {},
        Qt::QueuedConnection);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    Q_EMIT countChanged();
}

void OpenedProjects::forget(QString const& package) {
    auto const found = std::ranges::find(rows_, libraryText::path(package),
                                         [](auto const& row) { return row->project->package().url(); });
    if (found != rows_.end()) remove(static_cast<int>(found - rows_.begin()));
}

void OpenedProjects::refresh() {
    for (auto const& row : rows_) row->desk.session()->attempt([&] { row->project->refresh(); });
}

void OpenedProjects::save() {
    for (auto const& row : rows_) row->desk.session()->save();
}

bool OpenedProjects::areSaved() const {
    return std::ranges::all_of(rows_, [](auto const& row) { return row->desk.session()->isSaved(); });
}

QString OpenedProjects::losses() {
    QStringList losses;
    for (auto const& row : rows_) {
        if (auto const loss = row->closing.loss()) losses.push_back(QString::fromStdString(*loss));
    }
    return losses.join(QStringLiteral("\n\n"));
}

int OpenedProjects::rowOf(OpenProject const* project) const {
    auto const found = std::ranges::find(rows_, project, [](auto const& row) { return row->project.get(); });
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

void OpenedProjects::note(OpenProject const* project) {
    auto const row = rowOf(project);
    if (row >= 0) Q_EMIT dataChanged(index(row), index(row));
}

QVariant OpenedProjects::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto& row = *rows_[static_cast<std::size_t>(index.row())];
    auto const& project = *row.project;
    switch (role) {
    case pathRole: return libraryText::text(project.package().url());
    case nameRole:
    case Qt::DisplayRole: return QString::fromStdString(project.document().name);
    case lengthRole: return libraryText::length(project.document().duration());
    case deskRole: return QVariant::fromValue(&row.desk);
    default: return {};
    }
}

QHash<int, QByteArray> OpenedProjects::roleNames() const {
    return {{pathRole, "path"}, {nameRole, "name"}, {lengthRole, "length"}, {deskRole, "desk"}};
}

}
