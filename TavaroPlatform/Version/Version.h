#pragma once

#include <string>
#include <string_view>

namespace tavaro {

/// "0.1.0".
std::string_view programVersion();
/// "tavaro 0.1.0 (1f2e3d4c5b)": with the commit that was built, "-dirty" where files were changed since; without one
/// where the sources were built outside of their history.
std::string versionOf(std::string_view program);

}
