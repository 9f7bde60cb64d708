#include <Benchmarks/Studio/EventSleep.h>

#include <QCoreApplication>
#include <QTimer>

#include <chrono>

namespace tavaro {

void sleepUntilEvent() {
    using namespace std::chrono_literals;
    QTimer alarm; // or it would sleep on where nothing happens
    alarm.setTimerType(Qt::PreciseTimer);
    alarm.start(5ms);
    // The overload with a time never sleeps.
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

}
