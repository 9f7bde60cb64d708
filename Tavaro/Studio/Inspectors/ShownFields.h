#pragma once

#include <Tavaro/Studio/Inspectors/InspectorModel.h>

#include <QSortFilterProxyModel>
#include <QStringList>

namespace tavaro {

/// Those fields of an inspector that a group of them shows: of paths and what is inside of them, or all but some. What
/// is in a section that is folded is left out; so is the heading of all of them, which the group has itself.
class ShownFields : public QSortFilterProxyModel {
    Q_OBJECT
    Q_PROPERTY(QAbstractItemModel* fields READ sourceModel WRITE setFields NOTIFY choiceChanged)
    Q_PROPERTY(QStringList only MEMBER only_ WRITE setOnly NOTIFY choiceChanged)
    Q_PROPERTY(QStringList without MEMBER without_ WRITE setWithout NOTIFY choiceChanged)
    Q_PROPERTY(QStringList folded READ folded NOTIFY foldedChanged)
    Q_PROPERTY(int depth READ depth NOTIFY depthChanged)

public:
    explicit ShownFields(QObject* parent = nullptr);

    void setFields(QAbstractItemModel* fields);
    void setOnly(QStringList const& paths);
    void setWithout(QStringList const& paths);
    /// The paths of the sections that are folded.
    QStringList const& folded() const { return folded_; }
    Q_INVOKABLE void toggle(QString const& section);
    /// How deep the first field is.
    int depth() const;

    /// An inspector's, also while there is none.
    QHash<int, QByteArray> roleNames() const override { return InspectorModel::roles(); }

Q_SIGNALS:
    void choiceChanged();
    void foldedChanged();
    void depthChanged();

protected:
    bool filterAcceptsRow(int row, QModelIndex const& parent) const override;

private:
    QStringList only_, without_, folded_;
};

}
