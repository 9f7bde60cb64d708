#include <Tavaro/Studio/Inspectors/ShownFields.h>

#include <algorithm>

namespace tavaro {

namespace {

enum class Itself { counts, isLeftOut };

QVariant fieldOf(QModelIndex const& row, char const* role) {
    static auto const roles = InspectorModel::roles();
    return row.data(roles.key(role));
}

/// Whether a path is inside of one of those.
bool isIn(QStringList const& sections, QString const& path, Itself itself) {
    return std::ranges::any_of(sections, [&](QString const& section) {
        if (path == section) return itself == Itself::counts;
        return (section.isEmpty() && itself == Itself::isLeftOut) || path.startsWith(section + QLatin1Char('.'));
    });
}

}

ShownFields::ShownFields(QObject* parent) : QSortFilterProxyModel(parent) {
    connect(this, &QAbstractItemModel::rowsInserted, this, &ShownFields::depthChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &ShownFields::depthChanged);
    connect(this, &QAbstractItemModel::modelReset, this, &ShownFields::depthChanged);
}

void ShownFields::setFields(QAbstractItemModel* fields) {
    setSourceModel(fields);
    Q_EMIT choiceChanged();
}

void ShownFields::setOnly(QStringList const& paths) {
    only_ = paths;
    invalidateFilter();
    Q_EMIT choiceChanged();
}

void ShownFields::setWithout(QStringList const& paths) {
    without_ = paths;
    invalidateFilter();
    Q_EMIT choiceChanged();
}

void ShownFields::toggle(QString const& section) {
    if (!folded_.removeOne(section)) folded_.push_back(section);
    invalidateFilter();
    Q_EMIT foldedChanged();
}

int ShownFields::depth() const { return rowCount() > 0 ? fieldOf(mapToSource(index(0, 0)), "depth").toInt() : 0; }

bool ShownFields::filterAcceptsRow(int row, QModelIndex const& parent) const {
    auto const field = sourceModel()->index(row, 0, parent);
    auto const path = fieldOf(field, "path").toString();
    bool const isTitle = path.isEmpty() && fieldOf(field, "editor") == QVariant(QStringLiteral("section")) &&
                         !fieldOf(field, "isOptional").toBool();
    if (isTitle || isIn(folded_, path, Itself::isLeftOut)) return false;
    return (only_.isEmpty() || isIn(only_, path, Itself::counts)) && !isIn(without_, path, Itself::counts);
}

}
