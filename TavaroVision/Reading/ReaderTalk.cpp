#include <TavaroVision/Reading/ReaderTalk.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroVision/Reading/Private/InkWords.h>
#include <TavaroVision/Reading/Private/LineImage.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tavaro {

namespace {

constexpr std::size_t mostLetters = 4096; // a line of the widest screen has fewer
constexpr std::size_t longestLetter = 16; // bytes

void put(std::uint32_t number, char* to) {
    for (unsigned i = 0; i < 4; ++i) to[i] = static_cast<char>(number >> (8 * i) & 0xFFU);
}

std::uint32_t numberAt(char const* from) {
    std::uint32_t number = 0;
    for (unsigned i = 0; i < 4; ++i) number |= std::uint32_t{static_cast<unsigned char>(from[i])} << (8 * i);
    return number;
}

bool isSpaceOrControl(char letter) { return static_cast<unsigned char>(letter) <= ' ' || letter == '\x7F'; }

double soundConfidence(double confidence) { return std::isfinite(confidence) ? std::clamp(confidence, 0.0, 1.0) : 0; }

/// With text, in order, inside of the image.
std::vector<SeenLetter> soundLetters(LineImage const& image, std::span<SeenLetter const> letters) {
    std::vector<SeenLetter> kept;
    for (auto letter : letters.first(std::min(letters.size(), mostLetters))) {
        std::erase_if(letter.text, isSpaceOrControl);
        if (letter.text.empty() || letter.text.size() > longestLetter) continue;
        letter.x = std::clamp(letter.x, kept.empty() ? 0 : kept.back().x, image.width - 1);
        letter.width = std::clamp(letter.width, 1, image.width - letter.x);
        letter.confidence = soundConfidence(letter.confidence);
        kept.push_back(std::move(letter));
    }
    // A letter before a wide space is often said to reach to the line's end.
    for (std::size_t i = 0; i + 1 < kept.size(); ++i)
        kept[i].width = std::clamp(kept[i].width, 1, std::max(kept[i + 1].x - kept[i].x, 1));
    return kept;
}

ReadWord wordOf(LineImage const& image, InkWord const& ink, std::span<SeenLetter const> letters) {
    ReadWord word;
    double sum = 0;
    for (auto const& letter : letters) {
        word.text += letter.text;
        sum += letter.confidence;
    }
    word.confidence = static_cast<float>(sum / static_cast<double>(letters.size()));
    auto const box = inPicture(image, {.x = ink.left, .y = 0, .width = ink.right - ink.left, .height = 1});
    int const left = std::clamp(box.x, image.line.x, image.line.right() - 1);
    int const right = std::clamp(box.right(), left + 1, image.line.right());
    word.box = {.x = left, .y = image.line.y, .width = right - left, .height = image.line.height};
    return word;
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

ReadLine readLine(LineImage const& image, std::span<SeenLetter const> letters) {
    ReadLine line{.box = image.line, .words = {}};
    if (image.width <= 0 || image.height <= 0 || image.line.isEmpty()) return line;
    auto const sound = soundLetters(image, letters);
    std::span<SeenLetter const> const all(sound);
    for (auto const& ink : inkWords(image, sound))
        line.words.push_back(wordOf(image, ink, all.subspan(ink.firstLetter, ink.letters)));
    return line;
}

}
