#include <TavaroVision/Reading/Private/LineImage.h>
#include <TavaroVision/Reading/ReaderTalk.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace tavaro;

namespace {

/// Three words of ink.
LineImage inkedImage() {
    LineImage image{.width = 300,
                    .height = 36,
                    .pixels = std::vector<std::uint8_t>(300 * 36, 255),
                    .letterHeight = 24,
                    .line = {40, 60, 140, 14},
                    .area = {36, 57, 148, 20}};
    for (std::size_t y = 6; y < 30; ++y)
        for (std::size_t x = 8; x < 290; ++x)
            if (x % 100 < 70 && x % 10 < 7) image.pixels[y * 300 + x] = 0;
    return image;
}

void expectWords(ReadLine const& line, PixelBox const& within) {
    int last = within.x;
    for (auto const& word : line.words) {
        bool const isInside = word.box.x >= last && word.box.right() <= within.right() && !word.box.isEmpty();
        bool const isSure = word.confidence >= 0 && word.confidence <= 1;
        bool const hasSpace = std::ranges::any_of(word.text, [](char letter) { return letter == ' '; });
        if (!isInside || !isSure || word.text.empty() || hasSpace) std::abort();
        last = word.box.x;
    }
}

}

// Whatever a reader says: words inside of the line and in order, or a sentence. Whatever it is sent: a size or none.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static auto const image = inkedImage();
    try {
        auto const reply = readReaderReply({reinterpret_cast<char const*>(data), size});
        expectWords(readLine(image, reply.letters), image.line);
    } catch (ReaderLost const& error) {
        if (std::string_view(error.what()).empty()) std::abort();
    }
    LineImageHead head{};
    std::memcpy(head.data(), data, std::min(size, head.size()));
    if (auto const sent = sizeOf(head); sent && sent->pixels() > std::size_t{4} << 20) std::abort();
    return 0;
}
