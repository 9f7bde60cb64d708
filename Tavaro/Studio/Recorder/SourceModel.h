#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QString>

#include <vector>

namespace tavaro {

/// Something on the desktop that can be recorded.
struct ListedSource {
    QString id; // as preferences keep it
    QString name;
    QString detail; // its size, or how many windows it has
    CaptureSource source;
    bool operator==(ListedSource const&) const = default;
};

/// Sources of one kind, each with a small picture of how it looks. Rows that remain after an update stay the same rows.
class SourceModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { SourceID = Qt::UserRole + 1, Name, Detail, Still };

    explicit SourceModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

    std::vector<ListedSource> const& sources() const { return sources_; }
    int count() const { return static_cast<int>(sources_.size()); }
    ListedSource const* find(QString const& id) const;

    void update(std::vector<ListedSource> const& sources);
    /// Nothing for an id that is not here any more.
    void setStill(QString const& id, QImage const& still);

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    int rowOf(QString const& id, int from = 0) const;
    void removeMissing(std::vector<ListedSource> const& sources);
    void place(ListedSource const& source, int row);

    std::vector<ListedSource> sources_;
    QHash<QString, QImage> stills_;
};

}
