#pragma once

#include <TavaroCore/History/ItemEdit.h>
#include <TavaroCore/History/ProjectDelta.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Records/Private/HeapBytes.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <span>
#include <type_traits>

/// How changes of records become bytes and back. A change is only readable beside the value that it starts from, which
/// is what makes it small:
///   record    a bit a field, then the changes of those that changed
///   list      how many leading and trailing items stay (found by identity), each with its change; the new items
///   between number    how far it is from "moved as far as the last number did", in units of its last place; else its
///   bits shared    nothing here; the part is kept beside
/// Changes are by bits, so that −0 and the payload of a NaN come back too.
namespace tavaro {

namespace delta {

template<class T> bool same(T const& a, T const& b);

template<class T> struct IsVector : std::false_type {};
template<class T> struct IsVector<std::vector<T>> : std::true_type {};
template<class T> struct IsMap : std::false_type {};
template<class T> struct IsMap<std::map<std::string, T>> : std::true_type {};
template<class T> struct IsSet : std::false_type {};
template<class T> struct IsSet<std::set<T>> : std::true_type {};
template<class T> struct IsShared : std::false_type {};
template<class T> struct IsShared<CopyOnWrite<T>> : std::true_type {};
template<class T> inline constexpr bool isOptional = tavaro::detail::IsOptional<T>::value;

template<class T>
concept Identified = requires(T item) {
    { item.id } -> std::convertible_to<UUID>;
};

template<RecordType R> bool sameRecord(R const& a, R const& b) {
    return std::apply([&](auto const&... each) { return (same(a.*each.member, b.*each.member) && ...); }, R::fields);
}

template<class T> bool same(T const& a, T const& b) {
    if constexpr (RecordType<T>) {
        return sameRecord(a, b);
    } else if constexpr (CaseType<T>) {
        if (a.content.index() != b.content.index()) return false;
        return std::visit(
            [&](auto const& content) {
                return same(content, std::get<std::remove_cvref_t<decltype(content)>>(b.content));
            },
            a.content);
    } else if constexpr (std::is_same_v<T, double>) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    } else if constexpr (std::is_same_v<T, float>) {
        return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
    } else if constexpr (IsShared<T>::value) {
        return a.sharesWith(b) || same(*a, *b);
    } else if constexpr (isOptional<T>) {
        return a.has_value() == b.has_value() && (!a || same(*a, *b));
    } else if constexpr (IsVector<T>::value || IsMap<T>::value || IsSet<T>::value) {
        return a.size() == b.size() &&
               std::equal(a.begin(), a.end(), b.begin(), [](auto const& x, auto const& y) { return same(x, y); });
    } else {
        return a == b;
    }
}

template<class A, class B> bool same(std::pair<A, B> const& a, std::pair<A, B> const& b) {
    return same(a.first, b.first) && same(a.second, b.second);
}

/// Doubles in the order of their values, one apart when they are neighbours; −0 comes just before 0.
inline std::int64_t place(double value) {
    auto const bits = std::bit_cast<std::int64_t>(value);
    return bits ^ ((bits >> 63) & 0x7FFF'FFFF'FFFF'FFFF);
}
inline double atPlace(std::int64_t place) {
    return std::bit_cast<double>(place ^ ((place >> 63) & 0x7FFF'FFFF'FFFF'FFFF));
}

constexpr int farthestPlace = 120;
constexpr std::uint8_t otherNumber = 255;

enum class OptionalChange : std::uint8_t { removed, given, inside };
enum class CaseChange : std::uint8_t { other, inside };

}

/// Appends the changes of values. The order of calls is the order in which the reader must ask.
class DeltaWriter {
public:
    explicit DeltaWriter(ProjectDelta& delta) : delta_(delta) {}

    template<class T> void change(T const& from, T const& to);
    template<class T> void whole(T const& value);
    /// The change of some items of a document's lists, as `change` would write it; false where none differs.
    bool items(DemoProject const& from, std::span<ItemEdit const> to) { return fieldsOf(from, to); }

    void byte(std::uint8_t value) { delta_.changes_ += static_cast<char>(value); }
    void count(std::size_t value) {
        for (; value >= 0x80; value >>= 7) byte(static_cast<std::uint8_t>(value | 0x80));
        byte(static_cast<std::uint8_t>(value));
    }

private:
    template<class T> void bits(T const& value) {
        delta_.changes_.append(reinterpret_cast<char const*>(&value), sizeof value);
    }
    void number(double from, double to);
    template<RecordType R> void record(R const& from, R const& to);
    template<class T> void list(std::vector<T> const& from, std::vector<T> const& to);
    template<RecordType R> bool fieldsOf(R const& from, std::span<ItemEdit const> to);
    template<class T> bool editsOf(std::vector<T> const& from, std::span<ItemEdit const> to);
    template<class T> void shared(CopyOnWrite<T> const& part) {
        delta_.parts_.push_back(part.shared());
        delta_.partBytes_ += heapBytes(part);
    }

    ProjectDelta& delta_;
    double shift_ = 0;
};

/// Reads changes and makes them, writing the way back as it goes.
class DeltaReader {
public:
    DeltaReader(ProjectDelta const& delta, DeltaWriter& back) : delta_(delta), back_(back) {}

    template<class T> void apply(T& value);
    template<class T> void whole(T& value);

private:
    std::uint8_t byte() { return static_cast<std::uint8_t>(delta_.changes_[at_++]); }
    std::size_t count() {
        std::size_t value = 0;
        for (int shift = 0;; shift += 7) {
            auto const next = byte();
            value |= static_cast<std::size_t>(next & 0x7F) << shift;
            if (next < 0x80) return value;
        }
    }
    template<class T> T bits() {
        T value;
        std::memcpy(&value, delta_.changes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return value;
    }
    double number(double from);
    template<RecordType R> void record(R& value);
    template<class T> void list(std::vector<T>& value);
    template<class T> void optional(std::optional<T>& value);
    template<CaseType C> void caseOf(C& value);

    ProjectDelta const& delta_;
    DeltaWriter& back_;
    std::size_t at_ = 0;
    std::size_t nextPart_ = 0;
    double shift_ = 0;
};

inline void DeltaWriter::number(double from, double to) {
    double const moved = from + shift_;
    if (std::isfinite(moved)) {
        auto const off = static_cast<std::int64_t>(static_cast<std::uint64_t>(delta::place(to)) -
                                                   static_cast<std::uint64_t>(delta::place(moved)));
        if (off >= -delta::farthestPlace && off <= delta::farthestPlace) {
            byte(static_cast<std::uint8_t>(off + delta::farthestPlace));
            return;
        }
    }
    byte(delta::otherNumber);
    bits(to);
    if (std::isfinite(to - from)) shift_ = to - from;
}

inline double DeltaReader::number(double from) {
    auto const code = byte();
    if (code != delta::otherNumber) {
        auto const place = static_cast<std::uint64_t>(delta::place(from + shift_)) + code - delta::farthestPlace;
        return delta::atPlace(static_cast<std::int64_t>(place));
    }
    auto const to = bits<double>();
    if (std::isfinite(to - from)) shift_ = to - from;
    return to;
}

template<RecordType R> void DeltaWriter::record(R const& from, R const& to) {
    auto const mask = delta_.changes_.size();
    delta_.changes_.append((fieldCount<R> + 7) / 8, '\0');
    std::size_t index = 0;
    forEachField<R>([&](auto const& field) {
        auto const bit = index++;
        auto const &a = from.*field.member, &b = to.*field.member;
        if (delta::same(a, b)) return;
        delta_.changes_[mask + bit / 8] |= static_cast<char>(1 << bit % 8);
        change(a, b);
    });
}

template<RecordType R> void DeltaReader::record(R& value) {
    constexpr auto maskBytes = (fieldCount<R> + 7) / 8;
    auto const mask = at_;
    at_ += maskBytes;
    for (std::size_t i = 0; i < maskBytes; ++i) back_.byte(static_cast<std::uint8_t>(delta_.changes_[mask + i]));
    std::size_t index = 0;
    forEachField<R>([&](auto const& field) {
        auto const bit = index++;
        if (delta_.changes_[mask + bit / 8] >> bit % 8 & 1) apply(value.*field.member);
    });
}

namespace delta {

template<class T> bool isSameItem(T const& a, T const& b) {
    if constexpr (Identified<T>)
        return a.id == b.id;
    else
        return same(a, b);
}

struct Ends {
    std::size_t leading, trailing;
};

template<class T> Ends commonEnds(std::vector<T> const& a, std::vector<T> const& b) {
    auto const shorter = std::min(a.size(), b.size());
    if (!Identified<T> && a.size() == b.size()) return {shorter, 0};
    Ends ends{0, 0};
    while (ends.leading < shorter && isSameItem(a[ends.leading], b[ends.leading])) ++ends.leading;
    while (ends.leading + ends.trailing < shorter &&
           isSameItem(a[a.size() - 1 - ends.trailing], b[b.size() - 1 - ends.trailing])) {
        ++ends.trailing;
    }
    return ends;
}

}

template<class T> void DeltaWriter::list(std::vector<T> const& from, std::vector<T> const& to) {
    auto const ends = delta::commonEnds(from, to);
    auto const removed = from.size() - ends.leading - ends.trailing;
    auto const added = to.size() - ends.leading - ends.trailing;
    count(ends.leading), count(ends.trailing), count(added);
    auto const kept = ends.leading + ends.trailing;
    for (std::size_t i = 0;; ++i) {
        auto const before = [&] { return i < ends.leading ? i : i + removed; };
        auto const after = [&] { return i < ends.leading ? i : i + added; };
        auto const unchangedFrom = i;
        while (i < kept && delta::same(from[before()], to[after()])) ++i;
        count(i - unchangedFrom);
        if (i == kept) break;
        change(from[before()], to[after()]);
    }
    for (std::size_t i = 0; i < added; ++i) whole(to[ends.leading + i]);
}

namespace delta {

template<class T> inline constexpr bool isEditedItem = false;
template<> inline constexpr bool isEditedItem<ZoomEvent> = true;
template<> inline constexpr bool isEditedItem<Overlay> = true;
template<> inline constexpr bool isEditedItem<CaptionCue> = true;
template<> inline constexpr bool isEditedItem<SilenceSpan> = true;

}

template<RecordType R> bool DeltaWriter::fieldsOf(R const& from, std::span<ItemEdit const> to) {
    auto const mask = delta_.changes_.size();
    delta_.changes_.append((fieldCount<R> + 7) / 8, '\0');
    std::size_t index = 0;
    bool isAny = false;
    forEachField<R>([&](auto const& field) {
        using Member = std::remove_cvref_t<decltype(from.*field.member)>;
        auto const bit = index++;
        bool isChanged = false;
        if constexpr (delta::IsVector<Member>::value) {
            if constexpr (delta::isEditedItem<typename Member::value_type>) isChanged = editsOf(from.*field.member, to);
        } else if constexpr (std::is_same_v<Member, CaptionTrack>) {
            isChanged = fieldsOf(from.*field.member, to);
        }
        if (!isChanged) return;
        isAny = true;
        delta_.changes_[mask + bit / 8] |= static_cast<char>(1 << bit % 8);
    });
    if (!isAny) delta_.changes_.resize(mask);
    return isAny;
}

template<class T> bool DeltaWriter::editsOf(std::vector<T> const& from, std::span<ItemEdit const> to) {
    auto const begin = delta_.changes_.size();
    count(from.size()), count(0), count(0); // all stay, none is new
    std::size_t next = 0;
    bool isAny = false;
    for (auto const& edit : to) {
        auto const* item = std::get_if<T>(&edit.item);
        if (!item || delta::same(from.at(edit.index), *item)) continue;
        isAny = true;
        count(edit.index - next);
        change(from[edit.index], *item);
        next = edit.index + 1;
    }
    if (isAny)
        count(from.size() - next);
    else
        delta_.changes_.resize(begin);
    return isAny;
}

template<class T> void DeltaReader::list(std::vector<T>& value) {
    auto const leading = count(), trailing = count(), added = count();
    auto const kept = leading + trailing, removed = value.size() - kept;
    back_.count(leading), back_.count(trailing), back_.count(removed);
    for (std::size_t i = 0;; ++i) {
        auto const unchanged = count();
        back_.count(unchanged);
        i += unchanged;
        if (i == kept) break;
        apply(value[i < leading ? i : i + removed]);
    }
    auto const middle = value.begin() + static_cast<std::ptrdiff_t>(leading);
    auto const middleEnd = middle + static_cast<std::ptrdiff_t>(removed);
    for (auto item = middle; item != middleEnd; ++item) back_.whole(*item);
    if (added == 0 && removed == 0) return;
    std::vector<T> items(added);
    for (auto& item : items) whole(item);
    auto const place = value.erase(middle, middleEnd);
    value.insert(place, std::make_move_iterator(items.begin()), std::make_move_iterator(items.end()));
}

template<class T> void DeltaReader::optional(std::optional<T>& value) {
    switch (static_cast<delta::OptionalChange>(byte())) {
    case delta::OptionalChange::removed:
        back_.byte(static_cast<std::uint8_t>(delta::OptionalChange::given));
        back_.whole(*value);
        value.reset();
        break;
    case delta::OptionalChange::given:
        back_.byte(static_cast<std::uint8_t>(delta::OptionalChange::removed));
        whole(value.emplace());
        break;
    case delta::OptionalChange::inside:
        back_.byte(static_cast<std::uint8_t>(delta::OptionalChange::inside));
        apply(*value);
        break;
    }
}

template<CaseType C> void DeltaReader::caseOf(C& value) {
    auto const change = byte();
    back_.byte(change);
    if (static_cast<delta::CaseChange>(change) == delta::CaseChange::inside) {
        std::visit([&](auto& content) { apply(content); }, value.content);
    } else {
        back_.whole(value);
        whole(value);
    }
}

template<class T> void DeltaWriter::change(T const& from, T const& to) {
    if constexpr (RecordType<T>) {
        record(from, to);
    } else if constexpr (std::is_same_v<T, double>) {
        number(from, to);
    } else if constexpr (std::is_same_v<T, bool>) {
        // the other one
    } else if constexpr (delta::IsVector<T>::value) {
        list(from, to);
    } else if constexpr (delta::isOptional<T>) {
        using delta::OptionalChange;
        auto const kind = !to ? OptionalChange::removed : !from ? OptionalChange::given : OptionalChange::inside;
        byte(static_cast<std::uint8_t>(kind));
        if (kind == OptionalChange::given) whole(*to);
        if (kind == OptionalChange::inside) change(*from, *to);
    } else if constexpr (CaseType<T>) {
        bool const isInside = from.content.index() == to.content.index();
        byte(static_cast<std::uint8_t>(isInside ? delta::CaseChange::inside : delta::CaseChange::other));
        if (!isInside) return whole(to);
        std::visit(
            [&](auto const& content) { change(content, std::get<std::remove_cvref_t<decltype(content)>>(to.content)); },
            from.content);
    } else {
        whole(to);
    }
}

template<class T> void DeltaReader::apply(T& value) {
    if constexpr (RecordType<T>) {
        record(value);
    } else if constexpr (std::is_same_v<T, double>) {
        double const to = number(value);
        back_.change(to, value);
        value = to;
    } else if constexpr (std::is_same_v<T, bool>) {
        value = !value;
    } else if constexpr (delta::IsVector<T>::value) {
        list(value);
    } else if constexpr (delta::isOptional<T>) {
        optional(value);
    } else if constexpr (CaseType<T>) {
        caseOf(value);
    } else {
        back_.whole(value);
        whole(value);
    }
}

template<class T> void DeltaWriter::whole(T const& value) {
    if constexpr (RecordType<T>) {
        forEachField<T>([&](auto const& field) { whole(value.*field.member); });
    } else if constexpr (CaseType<T>) {
        count(value.content.index());
        std::visit([&](auto const& content) { whole(content); }, value.content);
    } else if constexpr (std::is_same_v<T, std::string>) {
        count(value.size());
        delta_.changes_ += value;
    } else if constexpr (std::is_same_v<T, Data>) {
        whole(value.bytes);
    } else if constexpr (delta::IsShared<T>::value) {
        shared(value);
    } else if constexpr (delta::isOptional<T>) {
        byte(value.has_value());
        if (value) whole(*value);
    } else if constexpr (delta::IsMap<T>::value) {
        count(value.size());
        for (auto const& [key, element] : value) whole(key), whole(element);
    } else if constexpr (delta::IsVector<T>::value || delta::IsSet<T>::value) {
        count(value.size());
        for (auto const& element : value) whole(element);
    } else {
        static_assert(std::is_trivially_copyable_v<T>, "no change form for this type");
        bits(value);
    }
}

template<class T> void DeltaReader::whole(T& value) {
    if constexpr (RecordType<T>) {
        forEachField<T>([&](auto const& field) { whole(value.*field.member); });
    } else if constexpr (CaseType<T>) {
        tavaro::detail::selectCase(value, count());
        std::visit([&](auto& content) { whole(content); }, value.content);
    } else if constexpr (std::is_same_v<T, std::string>) {
        auto const size = count();
        value.assign(delta_.changes_, at_, size);
        at_ += size;
    } else if constexpr (std::is_same_v<T, Data>) {
        whole(value.bytes);
    } else if constexpr (delta::IsShared<T>::value) {
        value = T::sharing(std::static_pointer_cast<typename T::Value const>(delta_.parts_[nextPart_++]));
    } else if constexpr (delta::isOptional<T>) {
        value.reset();
        if (byte()) whole(value.emplace());
    } else if constexpr (delta::IsMap<T>::value) {
        value.clear();
        for (auto n = count(); n > 0; --n) {
            std::string key;
            whole(key);
            whole(value[key]);
        }
    } else if constexpr (delta::IsSet<T>::value) {
        value.clear();
        for (auto n = count(); n > 0; --n) {
            typename T::value_type element{};
            whole(element);
            value.insert(std::move(element));
        }
    } else if constexpr (delta::IsVector<T>::value) {
        value.resize(count());
        for (auto& element : value) whole(element);
    } else {
        value = bits<T>();
    }
}

}
