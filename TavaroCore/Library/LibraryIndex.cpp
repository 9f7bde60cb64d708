#include <TavaroCore/Library/Private/LibraryIndex.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>

namespace tavaro {

LibraryIndex LibraryIndex::decode(std::string_view json) {
    try {
        auto index = decodeJSON<LibraryIndex>(json);
        if (index.version == currentVersion) return index;
    } catch (JSONError const&) {
        // as good as none
    }
    return {.version = currentVersion};
}

LibraryIndex LibraryIndex::read(std::filesystem::path const& file) {
    constexpr std::uint64_t largest = 256 << 20;
    try {
        if (auto const text = readWholeFile(file, largest)) return decode(*text);
    } catch (FileError const&) {
        // as good as none
    }
    return {.version = currentVersion};
}

void LibraryIndex::write(std::filesystem::path const& file) const {
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    try {
        writeFileAtomically(file, encodeJSON(*this));
    } catch (FileError const&) {
        // the next listing looks at every project again
    }
}

}
