#include <TavaroCore/Editing/TranscriptEdits.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Editing/Private/TranscriptCuts.h>
#include <TavaroCore/Editing/Private/TranscriptDiff.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/TimelineWords.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <unordered_map>

namespace tavaro {

namespace {

constexpr std::size_t none = SIZE_MAX;
constexpr std::size_t largestComparison = 1
                                          << 16; // pairs of words of one difference that are compared letter by letter
constexpr std::size_t comparedLetters = 64;

/// A written word; in the film's text also the spoken word that it is part of.
struct Token {
    std::string_view text;
    std::string key; // what has to be the same for two tokens to be the same
    std::size_t owner = 0;
};

void appendTokens(std::string_view text, std::size_t owner, std::vector<Token>& tokens) {
    for (auto const written : writtenWords(text)) {
        auto key = bareText(written);
        if (key.empty()) key = written;
        tokens.push_back({written, std::move(key), owner});
    }
}

/// The number of letters to change, per letter: 1 for the same words, 0 for words with nothing in common.
double likeness(std::string_view a, std::string_view b) {
    a = a.substr(0, comparedLetters);
    b = b.substr(0, comparedLetters);
    std::size_t row[comparedLetters + 1];
    std::iota(row, row + b.size() + 1, std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            std::size_t const changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    auto const longer = std::max(a.size(), b.size());
    return longer == 0 ? 1 : 1 - static_cast<double>(row[b.size()]) / static_cast<double>(longer);
}

/// Pairs each of the few with one of the many, in order, so that the pairs are as alike as can be. Many × few.
std::vector<Match> paired(std::span<Token const> many, std::span<Token const> few) {
    std::vector<Match> pairs;
    if (few.empty()) return pairs;
    if (many.size() * few.size() > largestComparison) {
        for (std::size_t j = 0; j < few.size(); ++j) pairs.emplace_back(j * many.size() / few.size(), j);
        return pairs;
    }
    std::size_t const width = few.size() + 1;
    std::vector<double> best((many.size() + 1) * width, -1);
    std::vector<bool> takes(best.size());
    for (std::size_t i = 0; i <= many.size(); ++i) best[i * width] = 0;
    for (std::size_t i = 1; i <= many.size(); ++i) {
        for (std::size_t j = 1; j <= std::min(i, few.size()); ++j) {
            double const skipped = best[(i - 1) * width + j], before = best[(i - 1) * width + j - 1];
            double const taken = before + likeness(many[i - 1].key, few[j - 1].key);
            takes[i * width + j] = taken > skipped;
            best[i * width + j] = std::max(taken, skipped);
        }
    }
    for (std::size_t i = many.size(), j = few.size(); j > 0; --i) {
        if (!takes[i * width + j]) continue;
        --j;
        pairs.emplace_back(i - 1, j);
    }
    std::reverse(pairs.begin(), pairs.end());
    return pairs;
}

std::vector<Match> commonTokens(std::vector<Token> const& film, std::vector<Token> const& text) {
    std::unordered_map<std::string_view, std::uint32_t> symbols;
    auto const symbolsOf = [&](std::vector<Token> const& tokens) {
        std::vector<std::uint32_t> result;
        result.reserve(tokens.size());
        for (auto const& token : tokens) {
            result.push_back(symbols.try_emplace(token.key, static_cast<std::uint32_t>(symbols.size())).first->second);
        }
        return result;
    };
    auto const a = symbolsOf(film), b = symbolsOf(text);
    return longestCommonSubsequence(a, b);
}

/// For each token of the text the token of the film that it stands for, or `none`.
std::vector<std::size_t> counterparts(std::vector<Token> const& film, std::vector<Token> const& text) {
    std::vector<std::size_t> result(text.size(), none);
    auto matches = commonTokens(film, text);
    matches.emplace_back(film.size(), text.size());
    std::size_t filmAt = 0, textAt = 0;
    for (auto const& [inFilm, inText] : matches) {
        std::span const gone(film.data() + filmAt, inFilm - filmAt), come(text.data() + textAt, inText - textAt);
        if (gone.size() >= come.size()) {
            for (auto const& [old, fresh] : paired(gone, come)) result[textAt + fresh] = filmAt + old;
        } else {
            for (auto const& [fresh, old] : paired(come, gone)) result[textAt + fresh] = filmAt + old;
        }
        if (inText < text.size()) result[inText] = inFilm;
        filmAt = inFilm + 1;
        textAt = inText + 1;
    }
    return result;
}

bool endsSentence(std::string_view text) { return text.ends_with('.') || text.ends_with('?') || text.ends_with('!'); }

/// For each token of the text the token of the film that it is written to; those that nobody spoke go to a neighbour.
std::vector<std::size_t> homes(std::vector<Token> const& text, std::vector<std::size_t> const& counterparts) {
    auto result = counterparts;
    std::size_t behind = none;
    std::vector<std::size_t> next(text.size(), none);
    for (std::size_t j = text.size(); j-- > 0;) {
        if (counterparts[j] != none) behind = counterparts[j];
        next[j] = behind;
    }
    std::size_t before = none;
    for (std::size_t j = 0; j < text.size(); ++j) {
        if (counterparts[j] == none) {
            bool const beginsSentence = j > 0 && endsSentence(text[j - 1].text);
            bool const joinsNext = before == none || beginsSentence;
            result[j] = joinsNext && next[j] != none ? next[j] : before;
        }
        before = result[j];
    }
    return result;
}

/// What becomes of a spoken word.
struct Rewritten {
    std::string text; // empty when the word is cut
    bool isCorrected = false;
    bool hasTokens = false; // a word without any written text is none of the text's business
};

std::vector<Rewritten> rewritten(std::vector<TimelineWord> const& words, std::vector<Token> const& film,
                                 std::vector<Token> const& text, std::vector<std::size_t> const& counterparts) {
    std::vector<Rewritten> result(words.size());
    for (auto const& token : film) result[token.owner].hasTokens = true;
    auto const home = homes(text, counterparts);
    std::vector<bool> isWritten(film.size());
    for (std::size_t j = 0; j < text.size(); ++j) {
        auto& word = result[film[home[j]].owner];
        if (!word.text.empty()) word.text += ' ';
        word.text += text[j].text;
        if (counterparts[j] == none) continue;
        isWritten[counterparts[j]] = true;
        if (film[counterparts[j]].text != text[j].text) word.isCorrected = true;
    }
    for (std::size_t i = 0; i < film.size(); ++i) {
        auto& word = result[film[i].owner];
        if (!isWritten[i] && !word.text.empty()) word.isCorrected = true; // a part of it is gone
    }
    return result;
}

std::string writtenForm(std::string_view text) {
    std::string result;
    for (auto const word : writtenWords(text)) {
        if (!result.empty()) result += ' ';
        result += word;
    }
    return result;
}

}

TranscriptReplacement replaceTranscriptText(DemoProject& project, std::string_view with) {
    if (!project.transcript)
        throw TranscriptError(TranscriptError::Kind::noTranscript, "The project has no transcript to correct.");
    auto const words = timelineWords(project);
    std::vector<Token> film, text;
    for (std::size_t i = 0; i < words.size(); ++i) appendTokens(words[i].word.text, i, film);
    appendTokens(with, 0, text);
    if (film.empty() && !text.empty())
        throw TranscriptError(TranscriptError::Kind::noWords,
                              "The edit shows no spoken words that the text could stand for.");
    auto const counterpart = counterparts(film, text);
    auto const result = rewritten(words, film, text, counterpart);

    TranscriptReplacement replacement;
    replacement.inserted = static_cast<std::size_t>(std::count(counterpart.begin(), counterpart.end(), none));
    std::vector<bool> isCut(words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        isCut[i] = result[i].hasTokens && result[i].text.empty();
        replacement.deleted += isCut[i] ? 1 : 0;
        replacement.corrected += result[i].isCorrected ? 1 : 0;
        if (isCut[i] || !result[i].hasTokens || result[i].text == writtenForm(words[i].word.text)) continue;
        auto& word = project.transcript->edit().words[words[i].index];
        word.text = result[i].text;
        word.confidence = 1; // a person wrote it
    }
    replacement.seconds = removeRanges(project, cutsForWords(words, isCut, project.duration()));
    return replacement;
}

}
