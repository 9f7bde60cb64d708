#pragma once

#include <set>
#include <string>
#include <string_view>

namespace tavaro {

struct DemoProject;

/// What of a document's values the rest of the program cannot work with, as sentences with their paths: lengths below
/// zero, shares outside 0…1, a canvas without pixels, two items of a list with one identity, a
/// name that is too long to be shown. Looks only into the fields of those names.
std::set<std::string> valueProblems(DemoProject const& project, std::set<std::string_view> const& fields);

}
