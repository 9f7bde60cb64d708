#include <TavaroPlatform/Archive/Private/SharedText.h>

#include <TavaroPlatform/Archive/Private/ArchiveLimits.h>
#include <TavaroPlatform/Archive/Private/PackagingFailure.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Package/TypedText.h>
#include <TavaroCore/Records/JSONError.h>

#include <array>
#include <span>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

MappedFile mapped(fs::path const& file) {
    try {
        if (auto text = MappedFile::open(file, archiveLimits::largestDocument)) return std::move(*text);
    } catch (FileError const& error) {
        failPackaging(error.what());
    }
    failPackaging(file, ENOENT);
}

}

bool beginsLikeJSON(fs::path const& file) {
    std::array<char, 256> beginning{};
    auto const descriptor = FileDescriptor::open(file, FileDescriptor::Opening::reading);
    if (!descriptor.isOpen()) failPackaging(file, errno);
    auto const count = descriptor.read(std::as_writable_bytes(std::span(beginning)));
    if (count < 0) failPackaging(file, static_cast<int>(-count));
    std::string_view text(beginning.data(), static_cast<std::size_t>(count));
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    auto const first = text.find_first_not_of(" \t\r\n");
    return first != text.npos && (text[first] == '{' || text[first] == '[');
}

SharedText::SharedText(fs::path const& file) : original_(mapped(file)) {
    try {
        masked_ = withoutTypedText(original_.bytes());
    } catch (JSONError const& error) {
        if (mayHoldTypedText(original_.bytes())) problem_ = error.what();
    }
}

}
