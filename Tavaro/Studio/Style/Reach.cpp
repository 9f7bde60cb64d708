#include <Tavaro/Studio/Style/Reach.h>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QQuickItem>

namespace tavaro {

void Reach::press(QQuickItem* control) {
    QPointer<QQuickItem> const item = control;
    for (auto const type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        if (!item || !item->isEnabled()) return;
        QKeyEvent event(type, Qt::Key_Space, Qt::NoModifier);
        QCoreApplication::sendEvent(item, &event);
    }
}

}
