#pragma once

#include <cstdint>
#include <string>

namespace tavaro::commands {

enum class Dash { isFile, isStandardInput };

/// The text that the user named. Throws `FileError` where there is no such file, and for more than `most` bytes.
std::string readText(std::string const& file, Dash dash, std::uint64_t most = 64 << 20);

}
