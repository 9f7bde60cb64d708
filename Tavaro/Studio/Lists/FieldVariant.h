#pragma once

#include <TavaroCore/Records/CopyOnWrite.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/RGBAColor.h>

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QString>
#include <QVariant>

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// Values of the document's fields as QML has them: numbers, switches, texts, names of cases, `color`, `point`, `rect`,
/// `size`; a list for a list, an object for any other record, nothing for an empty optional.
namespace tavaro {

inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

template<class T> QVariant toVariant(T const& value);

namespace detail {

inline QVariant leafVariant(std::string const& value) { return toQString(value); }
inline QVariant leafVariant(UUID const& value) { return toQString(value.text()); }
inline QVariant leafVariant(Date const& value) { return static_cast<qlonglong>(value.milliseconds); }
inline QVariant leafVariant(bool value) { return value; }
inline QVariant leafVariant(RGBAColor const& value) {
    return QColor::fromRgbF(static_cast<float>(value.r), static_cast<float>(value.g), static_cast<float>(value.b),
                            static_cast<float>(value.a));
}
inline QVariant leafVariant(UnitPoint2 const& value) { return QPointF(value.x, value.y); }
inline QVariant leafVariant(NormalizedRect const& value) { return QRectF(value.x, value.y, value.width, value.height); }
inline QVariant leafVariant(Size2 const& value) {
    return QSize(static_cast<int>(value.width), static_cast<int>(value.height));
}

template<class T>
concept LeafValue = requires(T const& value) {
    leafVariant(value);
}
&&!std::is_arithmetic_v<T> || std::is_same_v<T, bool>;

template<RecordType R> QVariantMap membersOf(R const& record) {
    QVariantMap members;
    forEachField<R>([&](auto const& field) { members.insert(toQString(field.name), toVariant(record.*field.member)); });
    return members;
}

template<class List> QVariantList elementsOf(List const& list) {
    QVariantList elements;
    for (auto const& element : list) elements.push_back(toVariant(element));
    return elements;
}

}

template<class T> QVariant toVariant(T const& value) {
    if constexpr (detail::LeafValue<T>)
        return detail::leafVariant(value);
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<double>(value);
    else if constexpr (std::is_integral_v<T>)
        return static_cast<qlonglong>(value);
    else if constexpr (NamedEnum<T>)
        return toQString(nameOf(value));
    else if constexpr (detail::IsOptional<T>::value)
        return value ? toVariant(*value) : QVariant();
    else if constexpr (RecordType<T>)
        return detail::membersOf(value);
    else if constexpr (CaseType<T>) {
        auto members = std::visit([](auto const& content) { return detail::membersOf(content); }, value.content);
        members.insert(QStringLiteral("case"), toQString(T::caseNames[value.content.index()]));
        return members;
    } else
        return detail::elementsOf(value);
}

/// What QML gave, as the document's JSON has it.
JSONValue toJSON(QVariant const& value);

}
