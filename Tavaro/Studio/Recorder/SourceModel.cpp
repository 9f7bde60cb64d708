#include <Tavaro/Studio/Recorder/SourceModel.h>

#include <algorithm>

namespace tavaro {

int SourceModel::rowOf(QString const& id, int from) const {
    for (int row = from; row < count(); ++row)
        if (sources_[static_cast<std::size_t>(row)].id == id) return row;
    return -1;
}

ListedSource const* SourceModel::find(QString const& id) const {
    int const row = rowOf(id);
    return row < 0 ? nullptr : &sources_[static_cast<std::size_t>(row)];
}

void SourceModel::update(std::vector<ListedSource> const& sources) {
    int const before = count();
    removeMissing(sources);
    for (int row = 0; row < static_cast<int>(sources.size()); ++row) place(sources[static_cast<std::size_t>(row)], row);
    if (count() != before) Q_EMIT countChanged();
}

void SourceModel::removeMissing(std::vector<ListedSource> const& sources) {
    for (int row = count() - 1; row >= 0; --row) {
        auto const& id = sources_[static_cast<std::size_t>(row)].id;
        if (std::ranges::find(sources, id, &ListedSource::id) != sources.end()) continue;
        beginRemoveRows({}, row, row);
        stills_.remove(id);
        sources_.erase(sources_.begin() + row);
        endRemoveRows();
    }
}

/// All rows before that one are in their places.
void SourceModel::place(ListedSource const& source, int row) {
    int const from = rowOf(source.id, row);
    if (from < 0) {
        beginInsertRows({}, row, row);
        sources_.insert(sources_.begin() + row, source);
        return endInsertRows();
    }
    if (from != row) {
        beginMoveRows({}, from, from, {}, row);
        std::rotate(sources_.begin() + row, sources_.begin() + from, sources_.begin() + from + 1);
        endMoveRows();
    }
    auto& here = sources_[static_cast<std::size_t>(row)];
    if (here == source) return;
    here = source;
    Q_EMIT dataChanged(index(row), index(row), {Name, Detail});
}

void SourceModel::setStill(QString const& id, QImage const& still) {
    int const row = rowOf(id);
    if (row < 0) return;
    stills_[id] = still;
    Q_EMIT dataChanged(index(row), index(row), {Still});
}

int SourceModel::rowCount(QModelIndex const& parent) const { return parent.isValid() ? 0 : count(); }

QVariant SourceModel::data(QModelIndex const& index, int role) const {
    if (!index.isValid() || index.row() >= count()) return {};
    auto const& source = sources_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case SourceID: return source.id;
    case Qt::DisplayRole:
    case Name: return source.name;
    case Detail: return source.detail;
    case Still: return stills_.value(source.id);
    default: return {};
    }
}

QHash<int, QByteArray> SourceModel::roleNames() const {
    return {{SourceID, "sourceID"}, {Name, "name"}, {Detail, "detail"}, {Still, "still"}};
}

}
