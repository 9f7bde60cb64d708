#include <TavaroCapture/Recorder/Private/MemoryPressure.h>

#include <TavaroCore/Files/FileDescriptor.h>

#include <array>
#include <charconv>
#include <optional>
#include <string_view>

namespace tavaro {

namespace {

/// "some avg10=1.25 avg60=…": per cent of the last ten seconds in which some program waited for memory.
std::optional<double> waiting(std::filesystem::path const& file) {
    std::array<std::byte, 256> bytes{};
    auto const opened = FileDescriptor::open(file, FileDescriptor::Opening::reading);
    auto const count = opened.isOpen() ? opened.read(bytes) : 0;
    std::string_view const text(reinterpret_cast<char const*>(bytes.data()),
                                count > 0 ? static_cast<std::size_t>(count) : 0);
    constexpr std::string_view label = "some avg10=";
    if (!text.starts_with(label)) return std::nullopt;
    double share = 0;
    auto const read = std::from_chars(text.data() + label.size(), text.data() + text.size(), share);
    return read.ec == std::errc{} ? std::optional(share) : std::nullopt;
}

}

void MemoryPressure::look() {
    constexpr double noticed = 10, over = 5;
    auto const share = waiting(file_);
    if (!share) return;
    if (!isShort_ && *share >= noticed) ++events_;
    isShort_ = *share >= (isShort_ ? over : noticed);
}

}
