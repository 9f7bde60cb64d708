#include <TavaroCapture/Sources/CaptureSource.h>

#include <TavaroCapture/Sources/CaptureError.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>

namespace tavaro {

namespace {

/// Where a span that begins there ends; areas from outside may begin or end beyond all pixels.
std::int64_t endOf(int start, int length) { return std::int64_t{start} + length; }

int lengthBetween(std::int64_t start, std::int64_t end) {
    return static_cast<int>(std::max(end - start, std::int64_t{0}));
}

}

PixelRect PixelRect::intersection(PixelRect const& other) const {
    int const left = std::max(x, other.x);
    int const top = std::max(y, other.y);
    return {left, top, lengthBetween(left, std::min(endOf(x, width), endOf(other.x, other.width))),
            lengthBetween(top, std::min(endOf(y, height), endOf(other.y, other.height)))};
}

PixelRect PixelRect::unionWith(PixelRect const& other) const {
    int const left = std::min(x, other.x);
    int const top = std::min(y, other.y);
    return {left, top, std::max(x + width, other.x + other.width) - left,
            std::max(y + height, other.y + other.height) - top};
}

PixelRect shaped(PixelRect const& rect, AreaShape shape) {
    struct Ratio {
        std::int64_t width, height;
    };
    static constexpr std::array<Ratio, namesOf(AreaShape{}).size()> ratios{
        {{0, 0}, {16, 9}, {9, 16}, {1, 1}, {4, 5}, {4, 3}}};
    auto const [width, height] = ratios[static_cast<std::size_t>(shape)];
    if (shape == AreaShape::free) return rect;
    auto const widest = rect.height * width / height, highest = rect.width * height / width;
    return {rect.x, rect.y, static_cast<int>(std::min<std::int64_t>(rect.width, widest)),
            static_cast<int>(std::min<std::int64_t>(rect.height, highest))};
}

std::string_view recordingMode(CaptureSource const& source) {
    static constexpr std::array<std::string_view, 4> names{"display", "window", "application", "area"};
    return names[source.index()];
}

namespace {

/// Reads a whole number at the front of `text` and cuts it off; false when there is none.
template<class Number> bool takeNumber(std::string_view& text, Number& number, int base = 10) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc{}) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

}

WindowSource parseWindowSource(std::string_view text) {
    std::string_view rest = text;
    if (rest.starts_with("window-")) rest.remove_prefix(7);
    bool const isHexadecimal = rest.starts_with("0x") || rest.starts_with("0X");
    if (isHexadecimal) rest.remove_prefix(2);
    WindowSource source;
    if (!takeNumber(rest, source.id, isHexadecimal ? 16 : 10) || !rest.empty() || source.id == 0)
        throw CaptureError(CaptureError::Kind::badSource,
                           fmt::format("“{}” is not a window; give its id as listed, like window-4512.", text));
    return source;
}

AreaSource parseAreaSource(std::string_view text) {
    std::array<int, 4> values{};
    std::string_view rest = text;
    bool isGood = true;
    for (std::size_t i = 0; i < values.size() && isGood; ++i) {
        if (i > 0) {
            isGood = rest.starts_with(',');
            if (isGood) rest.remove_prefix(1);
        }
        isGood = isGood && takeNumber(rest, values[i]);
    }
    if (!isGood || !rest.empty())
        throw CaptureError(CaptureError::Kind::badSource,
                           fmt::format("“{}” is not an area; give it as X,Y,WIDTH,HEIGHT in pixels.", text));
    PixelRect const rect{values[0], values[1], values[2], values[3]};
    if (rect.width < 2 || rect.height < 2)
        throw CaptureError(CaptureError::Kind::badSource,
                           fmt::format("The area {} is too small to record; each side needs at least 2 pixels.", text));
    return {rect};
}

}
