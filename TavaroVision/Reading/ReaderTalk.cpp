#include <TavaroVision/Reading/ReaderTalk.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroVision/Reading/LineImage.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tavaro {

namespace {

constexpr std::size_t longestWord = 4096; // bytes; a key that fills a line has fewer

void put(std::uint32_t number, char* to) {
    for (unsigned i = 0; i < 4; ++i) to[i] = static_cast<char>(number >> (8 * i) & 0xFFU);
}

std::uint32_t numberAt(char const* from) {
    std::uint32_t number = 0;
    for (unsigned i = 0; i < 4; ++i) number |= std::uint32_t{static_cast<unsigned char>(from[i])} << (8 * i);
    return number;
}

bool isSpaceOrControl(char letter) { return static_cast<unsigned char>(letter) <= ' ' || letter == '\x7F'; }

float soundConfidence(double confidence) {
    return std::isfinite(confidence) ? static_cast<float>(std::clamp(confidence, 0.0, 1.0)) : 0;
}

/// As wide as the reader says, as high as the line is.
PixelBox soundBox(LineImage const& image, SeenWord const& word) {
    int const left = std::clamp(word.x, 0, image.width - 1);
    auto const end = std::int64_t{word.x} + word.width;
    int const right = static_cast<int>(std::clamp<std::int64_t>(end, left + 1, image.width));
    auto box = inPicture(image, {.x = left, .y = 0, .width = right - left, .height = image.height});
    int const first = std::max(box.x, image.line.x), last = std::min(box.right(), image.line.right());
    if (last <= first) return {};
    return {.x = first, .y = image.line.y, .width = last - first, .height = image.line.height};
}

}

LineImageHead headOf(LineImage const& image) {
    LineImageHead head{};
    put(static_cast<std::uint32_t>(image.width), head.data());
    put(static_cast<std::uint32_t>(image.height), head.data() + 4);
    return head;
}

std::optional<LineImageSize> sizeOf(LineImageHead const& head) {
    auto const width = numberAt(head.data()), height = numberAt(head.data() + 4);
    bool const isEmpty = width == 0 || height == 0;
    bool const isTooLarge = width > std::uint32_t{widestLineImage} || height > std::uint32_t{highestLineImage};
    if (isEmpty || isTooLarge) return std::nullopt;
    return LineImageSize{static_cast<int>(width), static_cast<int>(height)};
}

ReaderReply readReaderReply(std::string_view line) {
    try {
        return decodeJSON<ReaderReply>(line);
    } catch (JSONError const& error) {
        throw ReaderLost("the text reader gave an answer that cannot be read: " + excerpt(std::string(error.what())));
    }
}

ReadLine readLine(LineImage const& image, std::span<SeenWord const> words) {
    ReadLine line{.box = image.line, .words = {}};
    if (image.width <= 0 || image.height <= 0) return line;
    for (auto const& word : words) {
        auto text = word.text;
        std::erase_if(text, isSpaceOrControl);
        auto const box = soundBox(image, word);
        if (text.empty() || text.size() > longestWord || box.isEmpty()) continue;
        line.words.push_back({.text = std::move(text), .box = box, .confidence = soundConfidence(word.confidence)});
    }
    std::ranges::stable_sort(line.words, {}, [](ReadWord const& word) { return word.box.x; });
    return line;
}

}
