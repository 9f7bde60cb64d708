#pragma once

#include <QObject>

namespace tavaro {

class MainQueue;

/// Runs the main queue's tasks inside of Qt's event loop, for as long as it lives. Both belong to the thread that makes
/// it.
class QueueInLoop : public QObject {
public:
    explicit QueueInLoop(MainQueue& queue);
    ~QueueInLoop() override;

private:
    bool event(QEvent* event) override;

    MainQueue& queue_;
};

}
