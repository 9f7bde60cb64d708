#pragma once

#include <TavaroCapture/Recovery/RecoveryStore.h>

#include <QAbstractListModel>

#include <optional>
#include <set>
#include <vector>

namespace tavaro {

/// The takes that nobody finished, the newest first, but for those that are being brought back or thrown away.
class UnfinishedTakes : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    using Take = RecoveryStore::Recoverable;
    enum Role { idRole = Qt::UserRole, ageRole, lengthRole, stillRole, warningRole };

    using QAbstractListModel::QAbstractListModel;

    void setTakes(std::vector<Take> takes);
    /// Takes it off the list, for as long as it is not put back. None where it is not there.
    std::optional<Take> claim(QString const& id);
    void putBack(Take const& take);

    int count() const { return static_cast<int>(takes_.size()); }
    int rowCount(QModelIndex const& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    void show(std::vector<Take> takes);

    std::vector<Take> takes_; // that are shown
    std::set<UUID> claimed_;
};

}
