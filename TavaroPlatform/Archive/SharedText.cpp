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

FileBytes bytesOf(fs::path const& file) {
    try {
        if (auto text = FileBytes::read(file, archiveLimits::largestDocument)) return std::move(*text);
    } catch (FileError const& error) {
        failPackaging(error.what());
    }
    failPackaging(file, ENOENT);
}

/// The first byte that is no white space, after a byte order mark; 0 where there is none.
char firstLetter(fs::path const& file) {
    auto const descriptor = FileDescriptor::open(file, FileDescriptor::Opening::reading);
    if (!descriptor.isOpen()) failPackaging(file, errno);
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::array<char, 4096> piece{};
    for (bool isBeginning = true;; isBeginning = false) {
        auto const count = descriptor.read(std::as_writable_bytes(std::span(piece)));
        if (count < 0) failPackaging(file, static_cast<int>(-count));
        if (count == 0) return 0;
        std::string_view text(piece.data(), static_cast<std::size_t>(count));
        if (isBeginning && text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
        auto const first = text.find_first_not_of(" \t\r\n");
        if (first != text.npos) return text[first];
    }
}

}

bool couldBeLog(PackageItem const& file) {
    if (fs::path(file.name).extension() == ".json") return true;
    auto const first = firstLetter(file.path);
    return first == '{' || first == '[';
}

SharedText::SharedText(fs::path const& file) : original_(bytesOf(file)) {
    try {
        masked_ = withoutTypedText(original_.bytes());
    } catch (JSONError const& error) {
        if (mayHoldTypedText(original_.bytes())) problem_ = error.what();
    }
}

}
