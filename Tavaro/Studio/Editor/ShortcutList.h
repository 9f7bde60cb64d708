#pragma once

#include <Tavaro/Studio/Lists/RowsModel.h>

#include <QString>

#include <vector>

namespace tavaro {

/// Every shortcut that the window has, by group: the editor's commands from their table, and the keys of the window and
/// of its parts. Roles: `group`, `title`, `keys`.
class ShortcutList : public RowsModel {
    Q_OBJECT
    Q_PROPERTY(QString sought READ sought WRITE setSought NOTIFY soughtChanged)

public:
    explicit ShortcutList(QObject* parent = nullptr);

    /// Only rows that hold every word of it are shown, regardless of case.
    QString const& sought() const { return sought_; }
    void setSought(QString const& text);

    int rowCount(QModelIndex const& parent = {}) const override;
    QHash<int, QByteArray> roleNames() const override;
    QVariant data(QModelIndex const& index, int role) const override;

Q_SIGNALS:
    void soughtChanged();

private:
    struct Entry {
        QString group, title, keys;
    };

    static std::vector<Entry> all();
    bool isSought(Entry const& entry) const;

    QString sought_;
    std::vector<Entry> shown_;
};

}
