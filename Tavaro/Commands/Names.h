#pragma once

#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Records/Fields.h>

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace tavaro::commands {

/// A check for options that take the name of a case of an enumeration.
template<NamedEnum E> CLI::IsMember isNameOf() {
    auto const names = namesOf(E{});
    return CLI::IsMember(std::vector<std::string>(names.begin(), names.end()));
}

inline CLI::IsMember modeNames() { return isNameOf<DemoMode>(); }

/// The parser has checked the name.
inline DemoMode modeNamed(std::string const& name) { return enumNamed<DemoMode>(name).value(); }

}
