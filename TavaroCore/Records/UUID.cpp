#include <TavaroCore/Records/UUID.h>

#include <cstring>
#include <random>

namespace tavaro {

namespace {

constexpr bool isDashPosition(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}

UUID UUID::random() {
    thread_local std::mt19937_64 generator = [] {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device(), device(), device(), device(), device()};
        return std::mt19937_64(seed);
    }();
    UUID result;
    std::uint64_t const words[2] = {generator(), generator()};
    std::memcpy(result.bytes.data(), words, 16);
    result.bytes[6] = static_cast<std::uint8_t>((result.bytes[6] & 0x0F) | 0x40);
    result.bytes[8] = static_cast<std::uint8_t>((result.bytes[8] & 0x3F) | 0x80);
    return result;
}

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    UUID result;
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDashPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        int const digit = hexDigit(text[i]);
        if (digit < 0) return std::nullopt;
        auto& byte = result.bytes[nibble / 2];
        byte = static_cast<std::uint8_t>(nibble % 2 == 0 ? digit << 4 : byte | digit);
        ++nibble;
    }
    return result;
}

std::string UUID::text() const {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (isDashPosition(result.size())) result += '-';
        result += digits[bytes[i] >> 4];
        result += digits[bytes[i] & 15];
    }
    return result;
}

}
