#include <TavaroCore/Captions/Transcript.h>

#include <TavaroCore/Captions/SpokenText.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace tavaro {

namespace {

constexpr std::array<std::string_view, 15> fillers = {"um", "umm", "ummm", "uh", "uhh", "uhm", "er", "erm",
                                                      "ah", "ahh", "hmm",  "hm", "mm",  "mmm", "mhm"};

}

std::string TranscriptWord::bare() const { return bareText(text); }

bool TranscriptWord::isFiller() const {
    return std::find(fillers.begin(), fillers.end(), bareText(text)) != fillers.end();
}

std::string Transcript::plainText() const {
    std::string text;
    for (auto const& word : words) {
        auto const written = trimmed(word.text);
        if (!text.empty() && !written.empty()) text += ' ';
        text += written;
    }
    return text;
}

std::vector<TranscriptWord> Transcript::fillerWords() const {
    std::vector<TranscriptWord> result;
    std::copy_if(words.begin(), words.end(), std::back_inserter(result),
                 [](TranscriptWord const& word) { return word.isFiller(); });
    return result;
}

}
