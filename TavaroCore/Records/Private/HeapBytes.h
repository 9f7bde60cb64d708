#pragma once

#include <TavaroCore/Records/CopyOnWrite.h>
#include <TavaroCore/Records/Data.h>
#include <TavaroCore/Records/Fields.h>

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

/// The memory that a record owns outside itself, from its field list; shared parts count whole.
namespace tavaro {

template<class T> std::size_t heapBytes(T const& value);

namespace detail {

constexpr std::size_t treeNodeBytes = 32; // what the library's trees add to each element

inline std::size_t ownedBytes(std::string const& value) {
    static std::size_t const inPlace = std::string().capacity();
    return value.capacity() > inPlace ? value.capacity() + 1 : 0;
}
inline std::size_t ownedBytes(Data const& value) { return value.bytes.capacity(); }

template<class T> std::size_t ownedBytes(std::vector<T> const& value) {
    std::size_t sum = value.capacity() * sizeof(T);
    if constexpr (!std::is_trivially_copyable_v<T>) {
        for (auto const& element : value) sum += heapBytes(element);
    }
    return sum;
}
template<class T> std::size_t ownedBytes(std::set<T> const& value) {
    std::size_t sum = value.size() * (sizeof(T) + treeNodeBytes);
    for (auto const& element : value) sum += heapBytes(element);
    return sum;
}
template<class T> std::size_t ownedBytes(std::map<std::string, T> const& value) {
    std::size_t sum = value.size() * (sizeof(std::pair<std::string, T>) + treeNodeBytes);
    for (auto const& [key, element] : value) sum += heapBytes(key) + heapBytes(element);
    return sum;
}
template<class T> std::size_t ownedBytes(std::optional<T> const& value) { return value ? heapBytes(*value) : 0; }
template<class T> std::size_t ownedBytes(CopyOnWrite<T> const& value) { return sizeof(T) + heapBytes(*value); }

template<class T> std::size_t ownedBytes(T const& value) {
    std::size_t sum = 0;
    if constexpr (RecordType<T>)
        forEachField<T>([&](auto const& field) { sum += heapBytes(value.*field.member); });
    else
        std::visit([&](auto const& content) { sum += heapBytes(content); }, value.content);
    return sum;
}

}

template<class T> std::size_t heapBytes(T const& value) {
    if constexpr (std::is_trivially_copyable_v<T>)
        return 0;
    else
        return detail::ownedBytes(value);
}

}
