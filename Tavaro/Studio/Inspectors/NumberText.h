#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariant>

namespace tavaro {

/// Numbers and colours as they are typed and shown.
class NumberText final : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// A value times `factor`, with as many digits as its step can change.
    Q_INVOKABLE static QString shown(QVariant const& value, double factor, double step);
    /// "1:20"
    Q_INVOKABLE static QString time(double seconds);
    /// What was typed, with a point or a comma, a unit or none; no number where there is none.
    Q_INVOKABLE static double read(QString const& text);
    /// The next number on the grid of the steps.
    Q_INVOKABLE static double stepped(QVariant const& value, double by, double step);
    /// A point, a rectangle or a size of which one part is another.
    Q_INVOKABLE static QVariant withPart(QVariant const& value, QString const& part, double number);

    /// "#3563e9"
    Q_INVOKABLE static QString code(QColor const& color);
    /// What such a code or a colour's name says, as opaque as the colour before; invalid where it says nothing.
    Q_INVOKABLE static QColor color(QString const& text, QColor const& before);

    /// Of a file that was chosen.
    Q_INVOKABLE static QString path(QUrl const& file) { return file.toLocalFile(); }
};

}
