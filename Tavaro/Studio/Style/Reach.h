#pragma once

#include <QObject>

class QQuickItem;

namespace tavaro {

/// A press of the accessibility tree, carried out as the key that does the same: so a control that is worked through
/// the tree, by key or by mouse goes one way, with its command, its signals and its group.
class Reach : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    Q_INVOKABLE static void press(QQuickItem* control);
};

}
