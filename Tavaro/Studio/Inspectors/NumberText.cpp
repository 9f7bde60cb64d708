#include <Tavaro/Studio/Inspectors/NumberText.h>

#include <TavaroCore/Values/Timecode.h>

#include <QPointF>
#include <QRectF>
#include <QRegularExpression>
#include <QSize>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavaro {

namespace {

constexpr int mostDigits = 3;

/// Whole steps leave room for a digit that was typed.
int digitsOf(double step) {
    if (!(step > 0)) return 1;
    return std::clamp(static_cast<int>(std::ceil(-std::log10(step) - 1e-9)), 1, mostDigits);
}

/// "1.50" as "1.5", "2.00" as "2".
QString withoutZeros(QString text) {
    if (!text.contains(QLatin1Char('.'))) return text;
    while (text.endsWith(QLatin1Char('0'))) text.chop(1);
    if (text.endsWith(QLatin1Char('.'))) text.chop(1);
    return text;
}

}

QString NumberText::shown(QVariant const& value, double factor, double step) {
    if (!value.isValid() || value.isNull()) return {};
    auto const text = withoutZeros(QString::number(value.toDouble() * factor, 'f', digitsOf(step * factor)));
    return text == QStringLiteral("-0") ? QStringLiteral("0") : text;
}

QString NumberText::time(double seconds) { return QString::fromStdString(Timecode::format(seconds)); }

double NumberText::read(QString const& text) {
    static QRegularExpression const number(QStringLiteral("^\\s*([-−+]?(?:\\d+(?:[.,]\\d*)?|[.,]\\d+))"));
    auto const match = number.match(text);
    if (!match.hasMatch()) return std::numeric_limits<double>::quiet_NaN();
    auto digits = match.captured(1);
    digits.replace(QLatin1Char(','), QLatin1Char('.')).replace(QChar(0x2212), QLatin1Char('-'));
    return digits.toDouble();
}

double NumberText::stepped(QVariant const& value, double by, double step) {
    double const next = value.toDouble() + by;
    return step > 0 ? std::round(next / step) * step : next;
}

QVariant NumberText::withPart(QVariant const& value, QString const& part, double number) {
    auto const is = [&](char const* name) { return part == QLatin1String(name); };
    if (value.typeId() == QMetaType::QPointF) {
        auto const point = value.toPointF();
        return QPointF(is("x") ? number : point.x(), is("y") ? number : point.y());
    }
    if (value.typeId() == QMetaType::QRectF) {
        auto const rect = value.toRectF();
        return QRectF(is("x") ? number : rect.x(), is("y") ? number : rect.y(), is("width") ? number : rect.width(),
                      is("height") ? number : rect.height());
    }
    auto const size = value.toSize();
    constexpr double most = std::numeric_limits<int>::max();
    auto const pixels = static_cast<int>(std::clamp(std::round(number), -most, most));
    return QSize(is("width") ? pixels : size.width(), is("height") ? pixels : size.height());
}

QString NumberText::code(QColor const& color) { return color.name(QColor::HexRgb); }

QColor NumberText::color(QString const& text, QColor const& before) {
    auto const typed = text.trimmed();
    auto const named = QColor::isValidColor(typed) ? typed : QLatin1Char('#') + typed;
    QColor color(named);
    bool const saysOpacity = named.startsWith(QLatin1Char('#')) && named.size() == 9;
    if (color.isValid() && !saysOpacity) color.setAlphaF(before.alphaF());
    return color;
}

}
