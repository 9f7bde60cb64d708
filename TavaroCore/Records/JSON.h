#pragma once

#include <TavaroCore/Records/CopyOnWrite.h>
#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroCore/Records/JSONReader.h>
#include <TavaroCore/Records/JSONWriter.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroCore/Records/UUID.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// The JSON form of records, from their field lists. Reading is lenient: a missing key or a null keeps the record's
/// default, an unknown key is skipped, the last of a repeated key wins; a present value of another type throws
/// `JSONError` with its path. Writing sorts the keys and omits absent optionals.
/// Include this where a record is read or written, not in the headers that declare records.
namespace tavaro {

/// A value that is one of several cases, each with content of its own: `content` is a variant of records and
/// `caseNames` names its alternatives in order. JSON: {"caseName": {…content…}}.
template<class T>
concept CaseType = requires(T value) {
    T::caseNames.size();
    value.content.index();
};

template<class T> void readJSON(JSONReader& reader, T& value);
template<class T> void writeJSON(JSONWriter& writer, T const& value);

/// Reads a whole text as one record.
template<class R> R decodeJSON(std::string_view text) {
    JSONReader reader(text);
    R record;
    readJSON(reader, record);
    reader.expectEnd();
    return record;
}

template<class R> std::string encodeJSON(R const& record) {
    JSONWriter writer;
    writeJSON(writer, record);
    return writer.take();
}

namespace detail {

template<RecordType R> constexpr auto sortedFieldOrder() {
    std::array<std::size_t, fieldCount<R>> order{};
    std::array<std::string_view, fieldCount<R>> names{};
    std::size_t count = 0;
    forEachField<R>([&](auto const& field) { names[count++] = field.name; });
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return names[a] < names[b]; });
    return order;
}

template<RecordType R> inline constexpr auto sortedFields = sortedFieldOrder<R>();

/// The field's key as it stands in the text, between a comma and its value: `,"name":`.
template<RecordType R, std::size_t index> constexpr auto quotedKey() {
    constexpr std::string_view name = std::get<index>(R::fields).name;
    std::array<char, name.size() + 4> text{};
    text[0] = ',', text[1] = '"';
    std::copy(name.begin(), name.end(), text.begin() + 2);
    text[name.size() + 2] = '"', text[name.size() + 3] = ':';
    return text;
}

template<RecordType R, std::size_t index> inline constexpr auto keyOf = quotedKey<R, index>();

/// Reads one member in place, adding the key to the path of a failure.
template<RecordType R, std::size_t index> void readMember(JSONReader& reader, R& record) {
    constexpr auto const& field = std::get<index>(R::fields);
    try {
        if (!reader.takeNull()) readJSON(reader, record.*field.member);
    } catch (JSONError const& error) {
        throw error.inside(field.name);
    }
}

template<RecordType R> struct MemberReader {
    std::string_view name;
    void (*read)(JSONReader&, R&);
};

template<RecordType R, std::size_t... I> constexpr auto memberReaders(std::index_sequence<I...>) {
    return std::array<MemberReader<R>, sizeof...(I)>{
        MemberReader<R>{std::get<sortedFields<R>[I]>(R::fields).name, &readMember<R, sortedFields<R>[I]>}...};
}

template<RecordType R>
inline constexpr auto readersByName = memberReaders<R>(std::make_index_sequence<fieldCount<R>>{});

/// Reads members in any order, known or not, from the one on which the reader stands.
template<RecordType R> void readMembersByName(JSONReader& reader, R& record) {
    auto const& members = readersByName<R>;
    do {
        auto const key = reader.key();
        auto const found = std::lower_bound(members.begin(), members.end(), key,
                                            [](auto const& member, std::string_view k) { return member.name < k; });
        if (found != members.end() && found->name == key)
            found->read(reader, record);
        else
            reader.skip();
    } while (reader.nextMember());
}

template<RecordType R> void readRecord(JSONReader& reader, R& record) {
    bool hasMember = reader.enterObject();
    // Documents are written with sorted keys, so each key is nearly always one of the next.
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        [[maybe_unused]] auto const readIfNext = [&]<std::size_t index>() {
            if (!hasMember || !reader.takeKey(keyOf<R, index>)) return;
            readMember<R, index>(reader, record);
            hasMember = reader.nextMember();
        };
        (readIfNext.template operator()<sortedFields<R>[I]>(), ...);
    }
    (std::make_index_sequence<fieldCount<R>>{});
    if (hasMember) readMembersByName(reader, record);
    if constexpr (requires { settleAfterReading(record); }) settleAfterReading(record);
}

/// The most room that the text of a value can take, where its type alone tells; else 0.
template<class T> constexpr std::size_t fixedRoom() {
    if constexpr (std::is_same_v<T, double>) {
        return decimalRoom;
    } else if constexpr (NamedEnum<T>) {
        std::size_t longest = 0;
        for (auto const name : namesOf(T{})) longest = std::max(longest, name.size());
        return longest + 2;
    } else if constexpr (RecordType<T>) {
        std::size_t sum = 2;
        bool isFixed = true;
        forEachField<T>([&](auto const& field) {
            auto const room = fixedRoom<std::remove_cvref_t<decltype(std::declval<T&>().*field.member)>>();
            isFixed = isFixed && room > 0;
            sum += field.name.size() + 4 + room;
        });
        return isFixed ? sum : 0;
    } else {
        return 0;
    }
}

/// Writes such a value where there is room for it; a pointer's log is half a million of them.
template<class T> char* writeFixed(char* at, T const& value) {
    auto const put = [&](std::string_view text) { at = std::copy(text.begin(), text.end(), at); };
    if constexpr (std::is_same_v<T, double>) {
        if (std::isfinite(value)) return writeDecimal(at, value);
        put("null");
    } else if constexpr (NamedEnum<T>) {
        *at++ = '"';
        put(nameOf(value));
        *at++ = '"';
    } else {
        *at++ = '{';
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            [[maybe_unused]] auto const writeMember = [&]<std::size_t place>() {
                constexpr auto index = sortedFields<T>[place];
                constexpr std::size_t skipped = place == 0; // the comma
                constexpr auto const& key = keyOf<T, index>;
                std::memcpy(at, key.data() + skipped, key.size() - skipped);
                at = writeFixed(at + key.size() - skipped, value.*std::get<index>(T::fields).member);
            };
            (writeMember.template operator()<I>(), ...);
        }
        (std::make_index_sequence<fieldCount<T>>{});
        *at++ = '}';
    }
    return at;
}

template<class Value> struct IsOptional : std::false_type {};
template<class Value> struct IsOptional<std::optional<Value>> : std::true_type {};

/// Sorted by their keys, those that `isWanted` says.
template<RecordType R, class IsWanted> void writeMembers(JSONWriter& writer, R const& record, IsWanted isWanted) {
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        [[maybe_unused]] auto const writeMember = [&]<std::size_t index>() {
            if (!isWanted(std::get<index>(R::fields).name)) return;
            auto const& value = record.*std::get<index>(R::fields).member;
            if constexpr (IsOptional<std::remove_cvref_t<decltype(value)>>::value) {
                if (!value) return;
            }
            writer.quotedKey(keyOf<R, index>);
            writeJSON(writer, value);
        };
        (writeMember.template operator()<sortedFields<R>[I]>(), ...);
    }
    (std::make_index_sequence<fieldCount<R>>{});
}

template<RecordType R> void writeRecord(JSONWriter& writer, R const& record) {
    writer.beginObject();
    writeMembers(writer, record, [](std::string_view) { return true; });
    writer.endObject();
}

[[noreturn]] void failUnknownName(std::string_view found, std::string_view const* names, std::size_t count);
[[noreturn]] void failCaseShape();
[[noreturn]] void failIntegerRange();

template<class Integer> Integer fitting(std::int64_t value) {
    if (!std::in_range<Integer>(value)) failIntegerRange();
    return static_cast<Integer>(value);
}

template<NamedEnum E> E enumFromText(std::string_view text) {
    if (auto const value = enumNamed<E>(text)) return *value;
    auto const names = namesOf(E{});
    failUnknownName(text, names.data(), names.size());
}

template<CaseType C> std::size_t caseIndex(std::string_view name) {
    for (std::size_t i = 0; i < C::caseNames.size(); ++i) {
        if (C::caseNames[i] == name) return i;
    }
    failUnknownName(name, C::caseNames.data(), C::caseNames.size());
}

/// Makes the case of that index the value's content, with its defaults.
template<CaseType C> void selectCase(C& value, std::size_t index) {
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        ((I == index ? static_cast<void>(value.content.template emplace<I>()) : void()), ...);
    }
    (std::make_index_sequence<C::caseNames.size()>{});
}

template<CaseType C> void readCase(JSONReader& reader, C& value) {
    if (reader.type() == JSONReader::Type::string) {
        selectCase(value, caseIndex<C>(reader.string()));
        return;
    }
    int cases = 0;
    reader.object([&](std::string_view name) {
        if (++cases > 1) failCaseShape();
        selectCase(value, caseIndex<C>(name));
        std::string const key(name);
        try {
            std::visit([&](auto& content) { readJSON(reader, content); }, value.content);
        } catch (JSONError const& error) {
            throw error.inside(key);
        }
    });
    if (cases == 0) failCaseShape();
}

template<class Read> void readElements(JSONReader& reader, Read read) {
    std::size_t index = 0;
    for (bool has = reader.enterArray(); has; has = reader.nextElement(), ++index) {
        try {
            read();
        } catch (JSONError const& error) {
            throw error.inside(index);
        }
    }
}

template<class T> void readElement(JSONReader& reader, std::vector<T>& list) {
    reader.takeMemoryToGrow(list);
    readJSON(reader, list.emplace_back());
}

/// Reads a long array of flat records in two halves, beside each other where the program can. False when it is not one,
/// or not well formed: then the ordinary way has the right sentence.
template<class T> bool readHalves(JSONReader& reader, std::vector<T>& value) {
    auto const halves = reader.halves();
    if (!halves) return false;
    auto const readPart = [&](std::string_view text, std::vector<T>& part) {
        auto elements = reader.elements(text);
        do readElement(elements, part);
        while (elements.anotherElement());
    };
    std::vector<T> second;
    try {
        runBoth([&] { readPart(halves->first, value); }, [&] { readPart(halves->second, second); });
    } catch (JSONError const&) {
        value = {};
        return false;
    }
    reader.takeMemory(2 * sizeof(T) * (value.capacity() + second.capacity()));
    value.insert(value.end(), std::make_move_iterator(second.begin()), std::make_move_iterator(second.end()));
    reader.stepOver(*halves);
    return true;
}

}

void readJSON(JSONReader& reader, UUID& value);
void readJSON(JSONReader& reader, Date& value);
void readJSON(JSONReader& reader, Data& value);
void writeJSON(JSONWriter& writer, UUID const& value);
void writeJSON(JSONWriter& writer, Date const& value);
void writeJSON(JSONWriter& writer, Data const& value);

template<class T> void readJSON(JSONReader& reader, std::vector<T>& value) {
    value.clear();
    if constexpr (requires { T::isFlat; }) {
        if (detail::readHalves(reader, value)) return;
    }
    detail::readElements(reader, [&] { detail::readElement(reader, value); });
}

template<class T> void readJSON(JSONReader& reader, std::set<T>& value) {
    value.clear();
    detail::readElements(reader, [&] {
        T element{};
        readJSON(reader, element);
        reader.takeMemoryOfNode(sizeof(T));
        value.insert(std::move(element));
    });
}

template<class T> void readJSON(JSONReader& reader, std::map<std::string, T>& value) {
    value.clear();
    reader.object([&](std::string_view name) {
        std::string key(name);
        reader.takeMemoryOfNode(sizeof(T) + sizeof key + key.size()); // NOLINT(bugprone-sizeof-container)
        try {
            readJSON(reader, value[key]);
        } catch (JSONError const& error) {
            throw error.inside(key);
        }
    });
}

template<class T> void readJSON(JSONReader& reader, std::optional<T>& value) { readJSON(reader, value.emplace()); }

template<class T> void readJSON(JSONReader& reader, CopyOnWrite<T>& value) { readJSON(reader, value.edit()); }

template<class T> void readJSON(JSONReader& reader, T& value) {
    if constexpr (RecordType<T>)
        detail::readRecord(reader, value);
    else if constexpr (CaseType<T>)
        detail::readCase(reader, value);
    else if constexpr (NamedEnum<T>)
        value = detail::enumFromText<T>(reader.string());
    else if constexpr (std::is_same_v<T, bool>)
        value = reader.boolean();
    else if constexpr (std::is_floating_point_v<T>)
        value = static_cast<T>(reader.number());
    else if constexpr (std::is_integral_v<T>)
        value = detail::fitting<T>(reader.integer());
    else if constexpr (std::is_same_v<T, std::string>)
        value = reader.keptString();
    else
        static_assert(!sizeof(T), "no JSON form for this type");
}

template<class T> void writeJSON(JSONWriter& writer, std::vector<T> const& value) {
    writer.beginArray();
    for (auto const& element : value) writeJSON(writer, element);
    writer.endArray();
}

template<class T> void writeJSON(JSONWriter& writer, std::set<T> const& value) {
    writer.beginArray();
    for (auto const& element : value) writeJSON(writer, element);
    writer.endArray();
}

template<class T> void writeJSON(JSONWriter& writer, std::map<std::string, T> const& value) {
    writer.beginObject();
    for (auto const& [key, element] : value) {
        writer.escapedKey(key);
        writeJSON(writer, element);
    }
    writer.endObject();
}

template<class T> void writeJSON(JSONWriter& writer, std::optional<T> const& value) {
    writeJSON(writer, value.value());
}

template<class T> void writeJSON(JSONWriter& writer, CopyOnWrite<T> const& value) { writeJSON(writer, *value); }

template<class T> void writeJSON(JSONWriter& writer, T const& value) {
    if constexpr (RecordType<T> && detail::fixedRoom<T>() > 0) {
        writer.fixed(detail::fixedRoom<T>(), [&](char* at) { return detail::writeFixed(at, value); });
    } else if constexpr (RecordType<T>) {
        detail::writeRecord(writer, value);
    } else if constexpr (CaseType<T>) {
        writer.beginObject();
        writer.key(T::caseNames[value.content.index()]);
        std::visit([&](auto const& content) { writeJSON(writer, content); }, value.content);
        writer.endObject();
    } else if constexpr (NamedEnum<T>)
        writer.plainString(nameOf(value));
    else if constexpr (std::is_same_v<T, bool>)
        writer.boolean(value);
    else if constexpr (std::is_floating_point_v<T>)
        writer.number(value);
    else if constexpr (std::is_integral_v<T>)
        writer.integer(value);
    else if constexpr (std::is_same_v<T, std::string>)
        writer.string(value);
    else
        static_assert(!sizeof(T), "no JSON form for this type");
}

}
