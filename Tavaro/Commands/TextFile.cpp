#include <Tavaro/Commands/TextFile.h>

#include <TavaroCore/Files/AtomicFile.h>

#include <fmt/format.h>

#include <iostream>
#include <iterator>

namespace tavaro::commands {

std::string readText(std::string const& file, Dash dash, std::uint64_t most) {
    if (dash == Dash::isStandardInput && file == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    if (auto text = readWholeFile(file, most)) return std::move(*text);
    throw FileError(FileError::Kind::cannotRead, fmt::format("There is no file “{}”.", file));
}

}
