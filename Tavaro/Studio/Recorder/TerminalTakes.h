#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Control/TakeCaller.h>
#include <Tavaro/Control/TakeServer.h>
#include <Tavaro/Model/Jobs/SideQueue.h>
#endif

#include <QAbstractListModel>
#include <QString>
#include <QTimer>

#include <filesystem>
#include <vector>

namespace tavaro {

/// The takes that run in terminals, by `tavaro record`: seen, paused and ended from the window. Looks once a second,
/// beside the main thread.
class TerminalTakes : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY changed)

public:
    enum Role { textRole = Qt::UserRole, pausedRole, takingRole };

    explicit TerminalTakes(MainQueue& queue, std::filesystem::path folder = takeSocketFolder());

    int count() const { return static_cast<int>(takes_.size()); }
    Q_INVOKABLE void togglePause(int row) { order(row, TakeOrder::pause); }
    Q_INVOKABLE void stop(int row) { order(row, TakeOrder::stop); }

    int rowCount(QModelIndex const& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(QModelIndex const& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void changed();
    /// One that was here is over.
    void ended();

private:
    void look();
    void order(int row, TakeOrder order);
    void show(std::vector<RunningTake> takes);

    std::filesystem::path const folder_;
    std::vector<RunningTake> takes_;
    bool isLooking_ = false;
    SideQueue side_;
    QTimer timer_;
};

}
