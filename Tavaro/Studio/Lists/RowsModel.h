#pragma once

#include <QAbstractListModel>

namespace tavaro {

/// Rows for a view, and how many there are.
class RowsModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    int count() const { return rowCount({}); }

Q_SIGNALS:
    void countChanged();

protected:
    /// What a row's roles begin with.
    static constexpr int firstRole = Qt::UserRole + 1;
};

}
