#include <Tavaro/Studio/Loop/QueueInLoop.h>

#include <TavaroPlatform/Queues/MainQueue.h>

#include <QCoreApplication>
#include <QEvent>

namespace tavaro {

namespace {

QEvent::Type pending() {
    static int const type = QEvent::registerEventType();
    return static_cast<QEvent::Type>(type);
}

}

QueueInLoop::QueueInLoop(MainQueue& queue) : queue_(queue) {
    // Any thread: posting an event is what wakes Qt's loop.
    queue_.onPending([this] { QCoreApplication::postEvent(this, new QEvent(pending())); });
}

QueueInLoop::~QueueInLoop() { queue_.onPending({}); }

bool QueueInLoop::event(QEvent* event) {
    if (event->type() != pending()) return QObject::event(event);
    queue_.runPending();
    return true;
}

}
