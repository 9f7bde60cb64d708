#include <TavaroCore/Files/MappedFile.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PlainFile.h>

#include <cerrno>
#include <sys/mman.h>

namespace tavaro {

std::optional<MappedFile> MappedFile::open(std::filesystem::path const& file, std::uint64_t maxBytes) {
    auto const in = PlainFile::open(file, maxBytes);
    if (!in) return std::nullopt;
    if (in->size == 0) return MappedFile({});
    auto* const bytes = mmap(nullptr, in->size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, in->descriptor.get(), 0);
    if (bytes == MAP_FAILED) throw FileError::reading(file, errno);
    return MappedFile({static_cast<char const*>(bytes), in->size});
}

MappedFile::~MappedFile() {
    if (!bytes_.empty()) munmap(const_cast<char*>(bytes_.data()), bytes_.size());
}

}
