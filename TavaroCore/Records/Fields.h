#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace tavaro {

/// One entry of a record's field list: the JSON key and the member it stands for.
template<class Record, class Value> struct Field {
    std::string_view name;
    Value Record::*member;
};

template<class Record, class Value> constexpr Field<Record, Value> field(std::string_view name, Value Record::*member) {
    return {name, member};
}

/// A plain value whose members are listed once, in `fields`. Reading, writing and hashing walk that list.
template<class T>
concept RecordType = requires {
    std::tuple_size<std::remove_cvref_t<decltype(T::fields)>>::value;
};

template<RecordType R> inline constexpr std::size_t fieldCount =
    std::tuple_size_v<std::remove_cvref_t<decltype(R::fields)>>;

/// Calls `visit(field)` for each field of the record, in declaration order.
template<RecordType R, class Visitor> constexpr void forEachField(Visitor&& visit) {
    std::apply([&](auto const&... each) { (visit(each), ...); }, R::fields);
}

/// An enumeration that is stored by name: `namesOf(E)` gives the name of each case, in order, from 0.
template<class T>
concept NamedEnum = std::is_enum_v<T> && requires(T value) {
    namesOf(value).size();
};

template<NamedEnum E> constexpr std::string_view nameOf(E value) {
    return namesOf(value)[static_cast<std::size_t>(value)];
}

template<NamedEnum E> constexpr std::optional<E> enumNamed(std::string_view name) {
    auto const names = namesOf(E{});
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) return static_cast<E>(i);
    }
    return std::nullopt;
}

template<NamedEnum E> constexpr auto allCases() {
    std::array<E, namesOf(E{}).size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i) cases[i] = static_cast<E>(i);
    return cases;
}

namespace detail {

struct AnyMember {
    template<class T> operator T&() const noexcept;
    template<class T> operator T&&() const noexcept;
};
template<std::size_t> using AnyMemberAt = AnyMember;

template<class R, std::size_t... I> constexpr bool acceptsMembers(std::index_sequence<I...>) {
    return requires { R{AnyMemberAt<I>{}...}; };
}

/// How many members an aggregate has: the largest number of initialisers that it takes.
template<class R, std::size_t N = 0> constexpr std::size_t memberCount() {
    if constexpr (acceptsMembers<R>(std::make_index_sequence<N + 1>{}))
        return memberCount<R, N + 1>();
    else
        return N;
}

}

/// For a `static_assert` beside the record: a member that is missing from the list does not compile.
#if defined(__clang__)
template<RecordType R> inline constexpr bool listsEveryField =
    true; // Clang 14 rejects the probe; GCC builds keep watch.
#else
template<RecordType R> inline constexpr bool listsEveryField = detail::memberCount<R>() == fieldCount<R>;
#endif

}
