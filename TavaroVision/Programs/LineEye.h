#pragma once

#include <TavaroVision/Reading/ReaderTalk.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace tavaro {

/// The engine that reads: Tesseract, one line at a time.
class LineEye {
public:
    /// Loads the language, as "eng". Throws `Error` with a sentence where it is missing.
    explicit LineEye(char const* language);
    ~LineEye();

    /// The letters of a picture whose rows follow each other, of 8 bits a pixel.
    std::vector<SeenLetter> read(std::uint8_t const* pixels, int width, int height);

private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
};

}
