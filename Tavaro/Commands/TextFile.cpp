#include <Tavaro/Commands/TextFile.h>

#include <TavaroCore/Files/AtomicFile.h>

#include <fmt/format.h>

#include <array>
#include <iostream>

namespace tavaro::commands {

namespace {

std::string readStandardInput(std::uint64_t most) {
    std::string text;
    std::array<char, 1 << 16> piece;
    while (std::cin.read(piece.data(), piece.size()), std::cin.gcount() > 0) {
        text.append(piece.data(), static_cast<std::size_t>(std::cin.gcount()));
        if (text.size() <= most) continue;
        throw FileError(FileError::Kind::tooLarge,
                        fmt::format("Could not read the standard input: it is larger than {} bytes.", most));
    }
    return text;
}

}

std::string readText(std::string const& file, Dash dash, std::uint64_t most) {
    if (dash == Dash::isStandardInput && file == "-") return readStandardInput(most);
    if (auto text = readWholeFile(file, most)) return std::move(*text);
    throw FileError(FileError::Kind::cannotRead, fmt::format("There is no file “{}”.", file));
}

}
