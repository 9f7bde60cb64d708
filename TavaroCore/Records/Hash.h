#pragma once

#include <TavaroCore/Records/CopyOnWrite.h>
#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

/// Hashing of records over all their fields, from the field lists: equal records have equal hashes.
namespace tavaro {

template<class T> std::size_t hashOf(T const& value);

namespace detail {

inline void mixHash(std::size_t& seed, std::size_t hash) {
    seed ^= hash + 0x9E3779B97F4A7C15ull + (seed << 6) + (seed >> 2);
}

template<class Range> std::size_t hashElements(Range const& range) {
    std::size_t seed = range.size();
    for (auto const& element : range) mixHash(seed, hashOf(element));
    return seed;
}

template<class T> std::size_t hashValue(std::vector<T> const& value) { return hashElements(value); }
template<class T> std::size_t hashValue(std::set<T> const& value) { return hashElements(value); }
template<class T> std::size_t hashValue(std::optional<T> const& value) { return value ? hashOf(*value) + 1 : 0; }
template<class T> std::size_t hashValue(CopyOnWrite<T> const& value) { return hashOf(*value); }
inline std::size_t hashValue(Data const& value) { return hashElements(value.bytes); }
inline std::size_t hashValue(Date const& value) { return hashOf(value.milliseconds); }
inline std::size_t hashValue(UUID const& value) { return hashElements(value.bytes); }

template<class T> std::size_t hashValue(std::map<std::string, T> const& value) {
    std::size_t seed = value.size();
    for (auto const& [key, element] : value) {
        mixHash(seed, std::hash<std::string>{}(key));
        mixHash(seed, hashOf(element));
    }
    return seed;
}

template<class T> std::size_t hashValue(T const& value) {
    if constexpr (RecordType<T>) {
        std::size_t seed = fieldCount<T>;
        forEachField<T>([&](auto const& field) { mixHash(seed, hashOf(value.*field.member)); });
        return seed;
    } else if constexpr (requires { value.content.index(); }) {
        std::size_t seed = value.content.index();
        std::visit([&](auto const& content) { mixHash(seed, hashOf(content)); }, value.content);
        return seed;
    } else if constexpr (std::is_floating_point_v<T>) {
        return std::hash<T>{}(value == 0 ? T{0} : value); // 0 and −0 are equal
    } else {
        return std::hash<T>{}(value);
    }
}

}

template<class T> std::size_t hashOf(T const& value) { return detail::hashValue(value); }

}
