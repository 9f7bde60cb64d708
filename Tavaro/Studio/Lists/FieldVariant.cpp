#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <QJSValue>

#include <cmath>

namespace tavaro {

namespace {

/// As it is written in a document: one of 256 steps where it is one, else in four digits.
double part(float value) {
    auto const steps = static_cast<double>(value) * 255;
    if (std::abs(steps - std::round(steps)) < 0.01) return std::round(steps) / 255;
    return std::round(static_cast<double>(value) * 1e4) / 1e4;
}

JSONValue toJSON(QColor const& color) {
    auto const rgb = color.toRgb();
    float r = 0, g = 0, b = 0, a = 0;
    rgb.getRgbF(&r, &g, &b, &a);
    return JSONValue::Object{{"r", part(r)}, {"g", part(g)}, {"b", part(b)}, {"a", part(a)}};
}

JSONValue toJSON(QVariantList const& list) {
    JSONValue::Array array;
    for (auto const& element : list) array.push_back(tavaro::toJSON(element));
    return array;
}

JSONValue toJSON(QVariantMap const& map) {
    JSONValue::Object object;
    for (auto const& [key, member] : map.asKeyValueRange()) object.emplace(key.toStdString(), tavaro::toJSON(member));
    return object;
}

}

JSONValue toJSON(QVariant const& value) {
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr: return {};
    case QMetaType::Bool: return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong: return value.toLongLong();
    case QMetaType::Float:
    case QMetaType::Double: return value.toDouble();
    case QMetaType::QColor: return toJSON(value.value<QColor>());
    case QMetaType::QPoint:
    case QMetaType::QPointF: {
        auto const point = value.toPointF();
        return JSONValue::Object{{"x", point.x()}, {"y", point.y()}};
    }
    case QMetaType::QRect:
    case QMetaType::QRectF: {
        auto const rect = value.toRectF();
        return JSONValue::Object{{"x", rect.x()}, {"y", rect.y()}, {"width", rect.width()}, {"height", rect.height()}};
    }
    case QMetaType::QSize:
    case QMetaType::QSizeF: {
        auto const size = value.toSizeF();
        return JSONValue::Object{{"width", std::llround(size.width())}, {"height", std::llround(size.height())}};
    }
    case QMetaType::QStringList:
    case QMetaType::QVariantList: return toJSON(value.toList());
    case QMetaType::QVariantMap: return toJSON(value.toMap());
    default: break;
    }
    if (value.canConvert<QJSValue>() && value.typeId() == qMetaTypeId<QJSValue>())
        return toJSON(value.value<QJSValue>().toVariant());
    return value.toString().toStdString();
}

}
