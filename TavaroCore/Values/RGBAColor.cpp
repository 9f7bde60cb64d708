#include <TavaroCore/Values/RGBAColor.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

namespace tavaro {

std::string RGBAColor::hex() const {
    auto const byte = [](double value) { return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255)); };
    return fmt::format("#{:02X}{:02X}{:02X}", byte(r), byte(g), byte(b));
}

std::optional<RGBAColor> RGBAColor::fromHex(std::string_view text) {
    if (text.starts_with('#')) text.remove_prefix(1);
    unsigned code = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), code, 16);
    if (text.size() != 6 || error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return rgb(code);
}

}
