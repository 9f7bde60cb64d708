#pragma once

#include <QObject>

#include <functional>

namespace tavaro {

/// SIGINT, SIGTERM and SIGHUP as a call in Qt's loop, for as long as it lives. A second SIGINT or SIGTERM, more than
/// three seconds after the first, ends the process at once. One at a time, on the main thread.
class SignalsInLoop : public QObject {
public:
    explicit SignalsInLoop(std::function<void()> ending);
    ~SignalsInLoop() override;

private:
    std::function<void()> const ending_;
};

}
