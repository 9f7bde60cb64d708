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
    std::string result((bytes.size() + 2) / 3 * 4, '=');
    auto digits = result.begin();
    auto const put = [&](std::uint32_t bits, int count) {
        for (int i = 0; i < count; ++i) *digits++ = alphabet[(bits >> (18 - 6 * i)) & 63];
    };
    auto const* byte = bytes.data();
    auto left = bytes.size();
    for (; left >= 3; left -= 3, byte += 3) put(byte[0] << 16 | byte[1] << 8 | byte[2], 4);
    if (left == 2) put(byte[0] << 16 | byte[1] << 8, 3);
    if (left == 1) put(byte[0] << 16, 2);
    return result;
}

}
