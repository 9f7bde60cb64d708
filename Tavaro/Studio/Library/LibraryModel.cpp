#include <Tavaro/Studio/Library/LibraryModel.h>

#include <Tavaro/Studio/Library/LibraryText.h>
#include <Tavaro/Studio/Library/Stills.h>

#include <QCollator>
#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <array>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::array<char const*, 3> orderNames{"edited", "name", "length"};

/// That of no country, "C", sorts by bytes.
QLocale localeOfPeople() {
    QLocale const user;
    return user.language() == QLocale::C ? QLocale(QLocale::English) : user;
}

bool hasWords(LibraryItem const& item, QStringList const& words) {
    auto const name = QString::fromStdString(item.name);
    return std::all_of(words.begin(), words.end(),
                       [&](QString const& word) { return name.contains(word, Qt::CaseInsensitive); });
}

void arrange(std::vector<LibraryItem>& items, LibraryModel::Order order) {
    using enum LibraryModel::Order;
    if (order == length) std::ranges::stable_sort(items, std::greater(), &LibraryItem::duration);
    if (order != name) return;
    QCollator collator(localeOfPeople());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    auto const key = [&](LibraryItem const& item) { return collator.sortKey(QString::fromStdString(item.name)); };
    std::vector<std::pair<QCollatorSortKey, LibraryItem>> keyed;
    for (auto& item : items) {
        auto sortKey = key(item);
        keyed.emplace_back(std::move(sortKey), std::move(item));
    }
    std::ranges::stable_sort(keyed, [](auto const& a, auto const& b) { return a.first < b.first; });
    items.clear();
    for (auto& each : keyed) items.push_back(std::move(each.second));
}

bool showsTheSame(LibraryItem const& a, LibraryItem const& b) {
    return a.name == b.name && a.duration == b.duration && a.modified == b.modified && a.thumbnail == b.thumbnail &&
           a.problem == b.problem;
}

/// What is read out of a project: what its card shows.
QString summary(LibraryItem const& item) {
    auto const name = QString::fromStdString(item.name);
    if (item.problem) return name + QStringLiteral(", cannot be opened");
    return QStringLiteral("%1, %2, %3")
        .arg(name, libraryText::length(item.duration), libraryText::age(item.modified, QDateTime::currentDateTime()));
}

}

void LibraryModel::setItems(std::vector<LibraryItem> items) {
    items_ = std::move(items);
    // A listing that began before one was gone still has it.
    std::erase_if(hidden_, [&](fs::path const& package) { return !find(package); });
    update();
    Q_EMIT countChanged();
}

void LibraryModel::hide(fs::path const& package) {
    hidden_.insert(package);
    update();
}

void LibraryModel::show(fs::path const& package) {
    hidden_.erase(package);
    update();
}

void LibraryModel::setSearch(QString const& search) {
    if (search == search_) return;
    search_ = search;
    Q_EMIT searchChanged();
    update();
}

QString LibraryModel::order() const { return QLatin1String(orderNames.at(static_cast<std::size_t>(order_))); }

void LibraryModel::setOrder(QString const& order) {
    auto const found = std::ranges::find(orderNames, order, [](char const* name) { return QLatin1String(name); });
    if (found == orderNames.end() || order == this->order()) return;
    order_ = static_cast<Order>(found - orderNames.begin());
    beginResetModel();
    rows_ = wanted();
    endResetModel();
    Q_EMIT orderChanged();
}

LibraryItem const* LibraryModel::find(fs::path const& package) const {
    auto const found = std::ranges::find(items_, package, &LibraryItem::path);
    return found == items_.end() ? nullptr : &*found;
}

std::vector<LibraryItem> LibraryModel::wanted() const {
    auto const words = search_.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    std::vector<LibraryItem> wanted;
    std::ranges::copy_if(items_, std::back_inserter(wanted), [&](LibraryItem const& item) {
        return !hidden_.contains(item.path) && hasWords(item, words);
    });
    arrange(wanted, order_);
    return wanted;
}

void LibraryModel::update() {
    auto const before = count();
    auto const wanted = this->wanted();
    removeAllBut(wanted);
    for (int row = 0; row < static_cast<int>(wanted.size()); ++row) bring(row, wanted[static_cast<std::size_t>(row)]);
    if (count() != before) Q_EMIT countChanged();
}

void LibraryModel::removeAllBut(std::vector<LibraryItem> const& wanted) {
    std::set<fs::path> stay;
    for (auto const& item : wanted) stay.insert(item.path);
    for (int row = count() - 1; row >= 0; --row) {
        auto const place = rows_.begin() + row;
        if (stay.contains(place->path)) continue;
        beginRemoveRows({}, row, row);
        rows_.erase(place);
        endRemoveRows();
    }
}

void LibraryModel::bring(int row, LibraryItem const& item) {
    auto const place = rows_.begin() + row;
    auto const found = std::ranges::find(place, rows_.end(), item.path, &LibraryItem::path);
    if (found == rows_.end()) {
        beginInsertRows({}, row, row);
        rows_.insert(place, item);
        endInsertRows();
        return;
    }
    if (found != place) {
        auto const from = static_cast<int>(found - rows_.begin());
        beginMoveRows({}, from, from, {}, row);
        std::rotate(place, found, found + 1);
        endMoveRows();
    }
    bool const isSame = showsTheSame(*place, item);
    *place = item;
    if (!isSame) Q_EMIT dataChanged(index(row), index(row));
}

int LibraryModel::rowCount(QModelIndex const& parent) const { return parent.isValid() ? 0 : count(); }

QVariant LibraryModel::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& item = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case pathRole: return libraryText::text(item.path);
    case nameRole:
    case Qt::DisplayRole: return QString::fromStdString(item.name);
    case lengthRole: return item.problem ? QString() : libraryText::length(item.duration);
    case ageRole: return libraryText::age(item.modified, QDateTime::currentDateTime());
    case stillRole: return item.thumbnail ? Stills::ofPicture(*item.thumbnail) : QString();
    case problemRole: return QString::fromStdString(item.problem.value_or(""));
    case summaryRole: return summary(item);
    default: return {};
    }
}

QHash<int, QByteArray> LibraryModel::roleNames() const {
    return {{pathRole, "path"},   {nameRole, "name"},       {lengthRole, "length"},  {ageRole, "age"},
            {stillRole, "still"}, {problemRole, "problem"}, {summaryRole, "summary"}};
}

}
