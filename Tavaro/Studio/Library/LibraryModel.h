#pragma once

#include <TavaroCore/Library/ProjectLibrary.h>

#include <QAbstractListModel>
#include <QString>

#include <set>
#include <vector>

namespace tavaro {

/// The projects that the library page shows: those whose names have every word of the search, in the order that was
/// chosen. A new listing changes only the rows that differ, so that what is chosen, edited or scrolled to stays.
class LibraryModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString search MEMBER search_ WRITE setSearch NOTIFY searchChanged)
    Q_PROPERTY(QString order READ order WRITE setOrder NOTIFY orderChanged)

public:
    enum Role { pathRole = Qt::UserRole, nameRole, lengthRole, ageRole, stillRole, problemRole, summaryRole };
    enum class Order { edited, name, length };

    using QAbstractListModel::QAbstractListModel;

    void setItems(std::vector<LibraryItem> items);
    /// One that goes is not shown any more, until a listing without it or `show`.
    void hide(std::filesystem::path const& package);
    void show(std::filesystem::path const& package);
    void setSearch(QString const& search);
    /// "edited", "name", "length".
    QString order() const;
    void setOrder(QString const& order);

    int count() const { return static_cast<int>(rows_.size()); }
    /// Of the library, searched for or not.
    bool isEmpty() const { return items_.empty(); }
    /// Null where there is none of that path.
    LibraryItem const* find(std::filesystem::path const& package) const;

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();
    void searchChanged();
    void orderChanged();

private:
    std::vector<LibraryItem> wanted() const;
    void update();
    void removeAllBut(std::vector<LibraryItem> const& wanted);
    void bring(int row, LibraryItem const& item);

    std::vector<LibraryItem> items_; // of the library, the newest first
    std::vector<LibraryItem> rows_;  // that are shown
    std::set<std::filesystem::path> hidden_;
    QString search_;
    Order order_ = Order::edited;
};

}
