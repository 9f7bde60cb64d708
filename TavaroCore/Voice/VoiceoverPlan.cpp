#include <TavaroCore/Voice/VoiceoverPlan.h>

#include <algorithm>
#include <string_view>

namespace tavaro {

namespace {

constexpr double wordsPerSecond = 2.7;
constexpr double shortestLine = 0.4; // seconds

int wordCount(std::string_view text) {
    int words = 0;
    bool isInside = false;
    for (char const c : text) {
        bool const isSpace = c == ' ' || (c >= '\t' && c <= '\r');
        words += !isSpace && !isInside;
        isInside = !isSpace;
    }
    return words;
}

}

double VoiceoverSegment::duration() const {
    return audioDuration ? *audioDuration : std::max(wordCount(text) / wordsPerSecond, shortestLine);
}

}
