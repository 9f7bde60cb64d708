#pragma once

#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Records/Fields.h>

#include <CLI/CLI.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro::commands {

/// A check for options that take the name of a case of an enumeration.
template<NamedEnum E> CLI::IsMember isNameOf() {
    auto const names = namesOf(E{});
    return CLI::IsMember(std::vector<std::string>(names.begin(), names.end()));
}

inline CLI::IsMember modeNames() { return isNameOf<DemoMode>(); }

/// "1 click", "2 clicks".
inline std::string counted(std::size_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

/// The parser has checked the name.
inline DemoMode modeNamed(std::string const& name) { return enumNamed<DemoMode>(name).value(); }

}
