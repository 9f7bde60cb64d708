#pragma once

#include <QAbstractListModel>
#include <QString>

#include <functional>
#include <vector>

namespace tavaro {

/// What goes on beside the user's work, each with how far it is and a way to end it.
class Activities : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { titleRole = Qt::UserRole, progressRole };

    using QAbstractListModel::QAbstractListModel;

    /// Gives the number by which it is known.
    int add(QString const& title, std::function<void()> cancel);
    /// 0…1; below 0 where nobody knows, which is how it begins.
    void setProgress(int number, double progress);
    void remove(int number);
    Q_INVOKABLE void cancel(int row);

    int count() const { return static_cast<int>(rows_.size()); }
    int rowCount(QModelIndex const& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    struct Row {
        int number;
        QString title;
        double progress;
        std::function<void()> cancel;
    };

    int rowOf(int number) const;

    std::vector<Row> rows_;
    int last_ = 0;
};

}
