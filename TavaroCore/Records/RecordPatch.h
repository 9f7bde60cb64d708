#pragma once

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Records/JSONValue.h>

#include <charconv>

/// Include this where a record is changed, not in the headers that declare records.
namespace tavaro {

/// What an object means that is given for a list.
enum class ListItems {
    replacedWhole, // nothing: a list is given as an array
    byNumber,      // {"2": …} changes the third item, and null takes it out
};

namespace detail {

[[noreturn]] void failExpected(JSONReader::Type wanted, JSONValue const& found);
[[noreturn]] void failUnknownKey(std::string_view const* names, std::size_t count);
[[noreturn]] void failNoItem(std::size_t count);

template<class T> T const& expectContent(JSONValue const& value, JSONReader::Type type) {
    if (auto const* content = value.as<T>()) return *content;
    failExpected(type, value);
}

template<class Key, class Change> void insideOf(Key const& key, Change&& change) {
    try {
        change();
    } catch (JSONError const& error) {
        throw error.inside(key);
    }
}

template<class T> struct IsVector : std::false_type {};
template<class T> struct IsVector<std::vector<T>> : std::true_type {};
template<class T> struct IsSet : std::false_type {};
template<class T> struct IsSet<std::set<T>> : std::true_type {};
template<class T> struct IsMap : std::false_type {};
template<class T> struct IsMap<std::map<std::string, T>> : std::true_type {};
template<class T> struct IsCopyOnWrite : std::false_type {};
template<class T> struct IsCopyOnWrite<CopyOnWrite<T>> : std::true_type {};

/// One walk over a record and the patch of it.
struct RecordPatching {
    ListItems listItems;

    template<class T> void change(T& value, JSONValue const& by) const {
        if constexpr (std::is_same_v<T, JSONValue>)
            value = by;
        else if constexpr (IsOptional<T>::value)
            change(value ? *value : value.emplace(), by);
        else if constexpr (IsCopyOnWrite<T>::value)
            change(value.edit(), by);
        else if constexpr (IsVector<T>::value)
            changeList(value, by);
        else if constexpr (IsSet<T>::value)
            changeSet(value, by);
        else if constexpr (IsMap<T>::value)
            changeMap(value, by);
        else if constexpr (RecordType<T>)
            changeRecord(value, by);
        else if constexpr (CaseType<T>)
            changeCase(value, by);
        else
            changeLeaf(value, by);
    }

    /// One member, whose key the patch names. Null takes it back to what a new record has.
    template<RecordType R, class Value>
    void changeMember(R& record, Field<R, Value> const& field, JSONValue const& by) const {
        insideOf(field.name, [&] {
            if (by.isNull() && !std::is_same_v<Value, JSONValue>)
                record.*field.member = R{}.*field.member;
            else
                change(record.*field.member, by);
        });
    }

private:
    template<class R> void changeRecord(R& record, JSONValue const& by) const {
        for (auto const& entry : expectContent<JSONValue::Object>(by, JSONReader::Type::object)) {
            bool isKnown = false;
            forEachField<R>([&](auto const& field) {
                if (field.name != entry.first) return;
                isKnown = true;
                changeMember(record, field, entry.second);
            });
            if (!isKnown) insideOf(entry.first, [] { failUnknownField<R>(); });
        }
    }

    template<class R> [[noreturn]] static void failUnknownField() {
        std::array<std::string_view, fieldCount<R>> names;
        std::size_t count = 0;
        forEachField<R>([&](auto const& field) { names[count++] = field.name; });
        failUnknownKey(names.data(), count);
    }

    /// The case that the patch names comes in place of another one; its own content goes field by field.
    template<class C> void changeCase(C& value, JSONValue const& by) const {
        if (auto const* name = by.as<std::string>()) return selectCase(value, caseIndex<C>(*name));
        int named = 0;
        bool isGone = false;
        for (auto const& [key, content] : expectContent<JSONValue::Object>(by, JSONReader::Type::object)) {
            auto const index = caseIndex<C>(key);
            if (content.isNull()) {
                isGone = isGone || index == value.content.index();
                continue;
            }
            if (++named > 1) failCaseShape();
            isGone = false;
            if (index != value.content.index()) selectCase(value, index);
            insideOf(key, [&, &content = content] {
                std::visit([&](auto& fields) { change(fields, content); }, value.content);
            });
        }
        if (isGone && named == 0) failCaseShape();
    }

    template<class T> void changeList(std::vector<T>& list, JSONValue const& by) const {
        auto const* items = by.as<JSONValue::Object>();
        if (items && listItems == ListItems::byNumber) return changeItems(list, *items);
        std::vector<T> changed;
        for (auto const& item : expectContent<JSONValue::Array>(by, JSONReader::Type::array)) {
            insideOf(changed.size(), [&] {
                T made{};
                change(made, item);
                changed.push_back(std::move(made));
            });
        }
        list = std::move(changed);
    }

    template<class T> void changeItems(std::vector<T>& list, JSONValue::Object const& items) const {
        std::set<std::size_t, std::greater<>> removed;
        for (auto const& [key, item] : items) {
            std::size_t index = 0;
            auto const [end, code] = std::from_chars(key.data(), key.data() + key.size(), index);
            bool const isItem = code == std::errc{} && end == key.data() + key.size() && index < list.size();
            if (!isItem) insideOf(key, [&] { failNoItem(list.size()); });
            if (item.isNull())
                removed.insert(index);
            else
                insideOf(index, [&, &item = item] { change(list[index], item); });
        }
        for (auto const index : removed) list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
    }

    template<class T> void changeSet(std::set<T>& set, JSONValue const& by) const {
        std::vector<T> elements;
        changeList(elements, by);
        set = {elements.begin(), elements.end()};
    }

    template<class T> void changeMap(std::map<std::string, T>& map, JSONValue const& by) const {
        for (auto const& [key, element] : expectContent<JSONValue::Object>(by, JSONReader::Type::object)) {
            if (element.isNull())
                map.erase(key);
            else
                insideOf(key, [&, &key = key, &element = element] { change(map[key], element); });
        }
    }

    /// What has no parts is read from its text, with the sentences of reading.
    template<class T> static void changeLeaf(T& value, JSONValue const& by) {
        auto const text = encodeJSON(JSONValue{JSONValue::Array{by}});
        JSONReader reader(text);
        reader.enterArray();
        readJSON(reader, value);
    }
};

}

/// Changes a record as a merge patch (RFC 7386) of its JSON says, in place and only where the patch says so: an object
/// goes field by field, null takes a field back to what a new record has, anything else replaces the value whole. Of a
/// value with cases, the case that the patch names comes in place of another. Strict: a key that is no field and a
/// value of another type throw `JSONError` with its path; the record may then be changed in part.
template<RecordType R>
void patchRecord(R& record, JSONValue const& patch, ListItems listItems = ListItems::replacedWhole) {
    detail::RecordPatching{listItems}.change(record, patch);
}

}
