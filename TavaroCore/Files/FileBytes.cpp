#include <TavaroCore/Files/FileBytes.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PlainFile.h>

#include <span>

namespace tavaro {

std::optional<FileBytes> FileBytes::read(std::filesystem::path const& file, std::uint64_t maxBytes) {
    auto const in = PlainFile::open(file, maxBytes);
    if (!in) return std::nullopt;
    auto memory = std::make_unique_for_overwrite<char[]>(in->size);
    auto const count = in->descriptor.read(std::as_writable_bytes(std::span(memory.get(), in->size)));
    if (count < 0) throw FileError::reading(file, static_cast<int>(-count));
    return FileBytes(std::move(memory), static_cast<std::size_t>(count));
}

}
