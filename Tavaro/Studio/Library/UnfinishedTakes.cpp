#include <Tavaro/Studio/Library/UnfinishedTakes.h>

#include <Tavaro/Studio/Library/LibraryText.h>
#include <Tavaro/Studio/Library/Stills.h>

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace tavaro {

void UnfinishedTakes::setTakes(std::vector<Take> takes) {
    std::erase_if(takes, [&](Take const& take) { return claimed_.contains(take.id); });
    if (std::ranges::equal(takes, takes_, {}, &Take::id, &Take::id)) return;
    show(std::move(takes));
}

std::optional<UnfinishedTakes::Take> UnfinishedTakes::claim(QString const& id) {
    auto takes = takes_;
    auto const found = std::ranges::find(takes, id.toStdString(), [](Take const& take) { return take.id.text(); });
    if (found == takes.end()) return std::nullopt;
    auto claimed = std::move(*found);
    takes.erase(found);
    claimed_.insert(claimed.id);
    show(std::move(takes));
    return claimed;
}

void UnfinishedTakes::putBack(Take const& take) {
    claimed_.erase(take.id);
    auto takes = takes_;
    takes.push_back(take);
    std::ranges::stable_sort(takes, std::greater(), [](Take const& each) { return each.marker.startedAt; });
    show(std::move(takes));
}

void UnfinishedTakes::show(std::vector<Take> takes) {
    beginResetModel();
    takes_ = std::move(takes);
    endResetModel();
    Q_EMIT countChanged();
}

QVariant UnfinishedTakes::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& take = takes_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case idRole: return QString::fromStdString(take.id.text());
    case ageRole: return libraryText::age(take.marker.startedAt, QDateTime::currentDateTime());
    case lengthRole: return libraryText::length(take.estimatedDuration);
    case stillRole: return take.mediaFiles.empty() ? QString() : Stills::ofMovie(take.mediaFiles.front());
    case warningRole: return QString::fromStdString(take.warnings.empty() ? "" : take.warnings.front());
    default: return {};
    }
}

QHash<int, QByteArray> UnfinishedTakes::roleNames() const {
    return {
        {idRole, "takeId"}, {ageRole, "age"}, {lengthRole, "length"}, {stillRole, "still"}, {warningRole, "warning"}};
}

}
