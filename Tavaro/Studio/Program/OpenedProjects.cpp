#include <Tavaro/Studio/Program/OpenedProjects.h>

#include <Tavaro/Studio/Library/LibraryText.h>
#include <Tavaro/Studio/Library/Stills.h>

#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

QString stepName(std::optional<std::string_view> name) {
    return name ? QString::fromUtf8(name->data(), static_cast<qsizetype>(name->size())) : QString();
}

QString stillOf(ProjectPackage const& package) {
    std::error_code ignored;
    return std::filesystem::exists(package.thumbnailURL(), ignored) ? Stills::ofPicture(package.thumbnailURL())
                                                                    : QString();
}

}

void OpenedProjects::open(QString const& package) {
    projects_.open(libraryText::path(package), [this](Outcome<Opened> const& outcome) {
        try {
            add(outcome.value());
        } catch (Error const& error) {
            Q_EMIT failed(QString::fromUtf8(error.what()));
        }
    });
}

void OpenedProjects::add(Opened const& project) {
    if (auto const row = rowOf(project.get()); row >= 0) return Q_EMIT opened(row);
    beginInsertRows({}, count(), count());
    rows_.push_back(std::make_unique<Row>(
        Row{project, project->observe([this, project = project.get()](ProjectChange const&) { note(project); })}));
    endInsertRows();
    Q_EMIT countChanged();
    Q_EMIT opened(count() - 1);
}

void OpenedProjects::close(int row) {
    if (row < 0 || row >= count()) return;
    beginRemoveRows({}, row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    Q_EMIT countChanged();
}

void OpenedProjects::forget(QString const& package) {
    auto const found = std::ranges::find(rows_, libraryText::path(package),
                                         [](auto const& row) { return row->project->package().url(); });
    if (found != rows_.end()) close(static_cast<int>(found - rows_.begin()));
}

/// A step back or forth is on the disk at once, as every edit is.
template<class Work> void OpenedProjects::attempt(int row, Work work) {
    if (row < 0 || row >= count()) return;
    try {
        work(*rows_[static_cast<std::size_t>(row)]->project);
    } catch (Error const& error) {
        Q_EMIT failed(QString::fromUtf8(error.what()));
    }
}

void OpenedProjects::undo(int row) {
    attempt(row, [](OpenProject& project) {
        if (project.undo()) project.save();
    });
}

void OpenedProjects::redo(int row) {
    attempt(row, [](OpenProject& project) {
        if (project.redo()) project.save();
    });
}

void OpenedProjects::refresh() {
    for (int row = 0; row < count(); ++row) attempt(row, [](OpenProject& project) { project.refresh(); });
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
    auto const& project = *rows_[static_cast<std::size_t>(index.row())]->project;
    switch (role) {
    case pathRole: return libraryText::text(project.package().url());
    case nameRole:
    case Qt::DisplayRole: return QString::fromStdString(project.document().name);
    case lengthRole: return libraryText::length(project.document().duration());
    case stillRole: return stillOf(project.package());
    case undoRole: return stepName(project.undoName());
    case redoRole: return stepName(project.redoName());
    default: return {};
    }
}

QHash<int, QByteArray> OpenedProjects::roleNames() const {
    return {{pathRole, "path"},   {nameRole, "name"},     {lengthRole, "length"},
            {stillRole, "still"}, {undoRole, "undoName"}, {redoRole, "redoName"}};
}

}
