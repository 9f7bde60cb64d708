#include <Tavaro/Studio/Recorder/TerminalTakes.h>

#include <TavaroCore/Values/Timecode.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr int betweenLooks = 1000; // milliseconds

QString textOf(RunningTake const& take) {
    auto const time = QString::fromStdString(Timecode::format(take.seconds));
    switch (take.phase) {
    case RecorderPhase::countdown: return TerminalTakes::tr("A terminal begins a take");
    case RecorderPhase::paused: return TerminalTakes::tr("A terminal’s take is paused at %1").arg(time);
    case RecorderPhase::finishing: return TerminalTakes::tr("A terminal saves its take");
    default: return TerminalTakes::tr("A terminal records: %1").arg(time);
    }
}

}

TerminalTakes::TerminalTakes(MainQueue& queue, std::filesystem::path folder)
    : folder_(std::move(folder))
    , side_(queue, "com.tavaro.takes") {
    connect(&timer_, &QTimer::timeout, this, &TerminalTakes::look);
    timer_.start(betweenLooks);
}

void TerminalTakes::look() {
    if (std::exchange(isLooking_, true)) return;
    side_.ask([folder = folder_] { return runningTakes(folder); },
              [this](Outcome<std::vector<RunningTake>> const& takes) {
                  isLooking_ = false;
                  if (!takes.failure()) show(takes.value());
              });
}

void TerminalTakes::order(int row, TakeOrder order) {
    if (row < 0 || row >= count()) return;
    side_.ask(
        [take = takes_[static_cast<std::size_t>(row)].socket, order] {
            orderTake(take, order);
            return true;
        },
        [this](Outcome<bool> const&) { look(); });
}

void TerminalTakes::show(std::vector<RunningTake> takes) {
    if (takes == takes_) return;
    bool const isSameList = std::ranges::equal(takes, takes_, {}, &RunningTake::socket, &RunningTake::socket);
    bool const hasEnded = takes.size() < takes_.size();
    if (!isSameList) beginResetModel();
    takes_ = std::move(takes);
    if (!isSameList)
        endResetModel();
    else
        Q_EMIT dataChanged(index(0), index(count() - 1));
    Q_EMIT changed();
    if (hasEnded) Q_EMIT ended();
}

QVariant TerminalTakes::data(QModelIndex const& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    auto const& take = takes_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case textRole:
    case Qt::DisplayRole: return textOf(take);
    case pausedRole: return take.phase == RecorderPhase::paused;
    case takingRole: return take.phase == RecorderPhase::paused || take.phase == RecorderPhase::recording;
    default: return {};
    }
}

QHash<int, QByteArray> TerminalTakes::roleNames() const {
    return {{textRole, "title"}, {pausedRole, "isPaused"}, {takingRole, "isTaking"}};
}

}
