#include <TavaroCore/Records/Data.h>

namespace tavaro {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}

std::optional<Data> Data::fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    while (!text.empty() && text.back() == '=') text.remove_suffix(1);
    if (text.size() % 4 == 1) return std::nullopt;
    Data result;
    result.bytes.reserve(text.size() * 3 / 4);
    std::uint32_t bits = 0;
    int count = 0;
    for (char const c : text) {
        auto const digit = alphabet.find(c);
        if (digit == std::string_view::npos) return std::nullopt;
        bits = (bits << 6) | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            result.bytes.push_back(static_cast<std::uint8_t>(bits >> count));
        }
    }
    return result;
}

std::string Data::base64() const {
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    std::uint32_t bits = 0;
    int count = 0;
    for (auto const byte : bytes) {
        bits = (bits << 8) | byte;
        for (count += 8; count >= 6; count -= 6) result += alphabet[(bits >> (count - 6)) & 63];
    }
    if (count > 0) result += alphabet[(bits << (6 - count)) & 63];
    while (result.size() % 4 != 0) result += '=';
    return result;
}

}
