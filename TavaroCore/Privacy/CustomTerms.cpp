#include <TavaroCore/Privacy/Private/CustomTerms.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/Expression.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr int stepsOfLine = 600;         // that a pattern may take on one line
constexpr int mostGivenUp = 5;           // lines; a pattern that is slow on more is left out
constexpr std::size_t substringWord = 4; // characters; shorter words count only as whole words

/// A line folded piece by piece, with the way back to its bytes.
struct FoldedLine {
    std::string text;
    std::vector<std::size_t> origin; // of each folded byte, the start of its piece of the line; one more at the end

    explicit FoldedLine(std::string_view line) {
        for (std::size_t i = 0; i < line.size();) {
            auto const next = i + SensitiveText::lengthOfFirstPiece(line.substr(i));
            auto const folded = SensitiveText::foldLookAlikes(line.substr(i, next - i));
            for (char const c : folded) {
                if (c == ' ' && !text.empty() && text.back() == ' ') continue;
                text += c;
                origin.push_back(i);
            }
            i = next;
        }
        origin.push_back(line.size());
    }

    /// Where the piece ends that a folded byte comes from.
    std::size_t endOfPiece(std::size_t at) const {
        return *std::upper_bound(origin.begin() + static_cast<std::ptrdiff_t>(at), origin.end(), origin[at]);
    }
};

}

struct CustomTerms::Pattern {
    std::string source;
    std::unique_ptr<Expression> expression;
    int givenUp = 0;            // lines on which it took too long
    bool isGivenUpHere = false; // on the line at hand
};

CustomTerms::CustomTerms(RedactionSettings const& settings) {
    for (auto const& word : settings.customWords) {
        auto folded = SensitiveText::foldLookAlikes(word);
        while (folded.starts_with(' ')) folded.erase(0, 1);
        while (folded.ends_with(' ')) folded.pop_back();
        if (!folded.empty()) words_.push_back(std::move(folded));
    }
    for (auto const& source : settings.customPatterns) {
        auto expression = std::make_unique<Expression>(source);
        if (expression->isValid()) {
            patterns_.push_back({source, std::move(expression)});
        } else {
            warnings_.push_back(fmt::format("The pattern “{}” is left out: it is not a regular expression.", source));
        }
    }
}

CustomTerms::~CustomTerms() = default;

void CustomTerms::beginLine() {
    for (auto& pattern : patterns_) {
        pattern.isGivenUpHere = false;
        pattern.expression->allow(stepsOfLine);
    }
}

void CustomTerms::search(LineWindow const& window, Claims& claims) {
    if (!words_.empty()) searchWords(window, claims);
    for (auto& pattern : patterns_) {
        if (!pattern.isGivenUpHere && pattern.givenUp < mostGivenUp) searchPattern(pattern, window, claims);
    }
}

void CustomTerms::searchWords(LineWindow const& window, Claims& claims) const {
    FoldedLine const line(window.text());
    auto const isPartOfWord = [&](std::size_t at) {
        return isBeyondASCII(line.text[at]) || isAlphanumeric(line.text[at]);
    };
    for (auto const& word : words_) {
        for (auto at = line.text.find(word); at != std::string::npos; at = line.text.find(word, at + 1)) {
            auto const end = at + word.size();
            bool const isInside = (at > 0 && isPartOfWord(at - 1)) || (end < line.text.size() && isPartOfWord(end));
            if (isInside && word.size() < substringWord) continue;
            if (!window.owns(line.origin[at])) continue;
            claims.claim(SensitiveKind::custom, window.start + line.origin[at], window.start + line.endOfPiece(end - 1),
                         Claims::Overlap::keepsRest);
        }
    }
}

/// What is found from the window before on continues the finding there.
void CustomTerms::searchPattern(Pattern& pattern, LineWindow const& window, Claims& claims) {
    bool const ended = pattern.expression->forEachMatch(window.text(), 0, [&](Expression::Match const& match) {
        auto const start = window.start + match.start, end = window.start + match.end();
        if (window.owns(match.start)) {
            claims.claim(SensitiveKind::custom, start, end, Claims::Overlap::keepsRest);
        } else if (start < window.firstOwn && end > window.firstOwn) {
            claims.grow(SensitiveKind::custom, window.endBefore, end);
        }
    });
    if (ended) return;
    pattern.isGivenUpHere = true;
    if (pattern.givenUp++ > 0) return;
    warnings_.push_back(
        fmt::format("The pattern “{}” takes too long on some lines and is given up there.", pattern.source));
}

}
