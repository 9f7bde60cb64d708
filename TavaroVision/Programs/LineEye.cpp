#include <TavaroVision/Programs/LineEye.h>

#include <TavaroCore/Errors/Error.h>

#include <string>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>
#include <vector>

namespace tavaro {

struct LineEye::Engine {
    tesseract::TessBaseAPI api;
};

namespace {

constexpr int dotsAnInch = 300; // of the enlarged letters; without it the engine guesses, and complains

// Keys and tokens are no words of a language: its dictionaries would make words of them, and take their time.
std::vector<std::string> const names{"load_system_dawg",  "load_freq_dawg",   "load_punc_dawg",     "load_number_dawg",
                                     "load_unambig_dawg", "load_bigram_dawg", "tessedit_do_invert", "debug_file"};
std::vector<std::string> const values{"0", "0", "0", "0", "0", "0", "0", "/dev/null"};

// What the engine takes digits and letters of keys for, and what is rare on screens.
constexpr char const* unlikely = "éÉ§£¢¥€®©°«»";

}

LineEye::LineEye(char const* language) : engine_(std::make_unique<Engine>()) {
    auto& api = engine_->api;
    api.SetVariable("debug_file", "/dev/null");
    if (api.Init(nullptr, language, tesseract::OEM_LSTM_ONLY, nullptr, 0, &names, &values, false) != 0)
        throw Error("the text engine has no language “" + std::string(language) +
                    "”. Install the package tesseract-ocr-" + language + ".");
    api.SetVariable("tessedit_char_blacklist", unlikely);
    api.SetPageSegMode(tesseract::PSM_RAW_LINE);
}

LineEye::~LineEye() = default;

std::vector<SeenLetter> LineEye::read(std::uint8_t const* pixels, int width, int height) {
    auto& api = engine_->api;
    api.SetImage(pixels, width, height, 1, width);
    api.SetSourceResolution(dotsAnInch);
    std::vector<SeenLetter> letters;
    if (api.Recognize(nullptr) != 0) return letters;
    std::unique_ptr<tesseract::ResultIterator> const each(api.GetIterator());
    if (!each) return letters;
    do {
        std::unique_ptr<char[]> const text(each->GetUTF8Text(tesseract::RIL_SYMBOL));
        int left = 0, top = 0, right = 0, bottom = 0;
        if (!text || !each->BoundingBox(tesseract::RIL_SYMBOL, &left, &top, &right, &bottom)) continue;
        letters.push_back({.text = text.get(),
                           .x = left,
                           .width = right - left,
                           .confidence = static_cast<double>(each->Confidence(tesseract::RIL_SYMBOL)) / 100,
                           .beginsWord = each->IsAtBeginningOf(tesseract::RIL_WORD)});
    } while (each->Next(tesseract::RIL_SYMBOL));
    return letters;
}

}
