#include <Tavaro/Studio/Library/Activities.h>

#include <algorithm>
#include <utility>

namespace tavaro {

int Activities::add(QString const& title, std::function<void()> cancel) {
    beginInsertRows({}, count(), count());
    rows_.push_back({++last_, title, -1, std::move(cancel)});
    endInsertRows();
    Q_EMIT countChanged();
    return last_;
}

void Activities::setProgress(int number, double progress) {
    auto const row = rowOf(number);
    if (row < 0) return;
    rows_[static_cast<std::size_t>(row)].progress = progress;
    Q_EMIT dataChanged(index(row), index(row), {progressRole});
}

void Activities::remove(int number) {
    auto const row = rowOf(number);
    if (row < 0) return;
    beginRemoveRows({}, row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    Q_EMIT countChanged();
}

void Activities::cancel(int row) {
    if (row >= 0 && row < count()) rows_[static_cast<std::size_t>(row)].cancel();
}

int Activities::rowOf(int number) const {
    auto const found = std::ranges::find(rows_, number, &Row::number);
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

QVariant Activities::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& row = rows_[static_cast<std::size_t>(index.row())];
    if (role == titleRole || role == Qt::DisplayRole) return row.title;
    return role == progressRole ? QVariant(row.progress) : QVariant();
}

QHash<int, QByteArray> Activities::roleNames() const { return {{titleRole, "title"}, {progressRole, "progress"}}; }

}
