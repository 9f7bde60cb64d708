#include <Tavaro/Studio/Editor/TranscriptEntries.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Editing/TranscriptEdits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/TimelineWords.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

using Entry = TranscriptEntry;

constexpr double pauseOfParagraphs = 1.2; // seconds
constexpr std::size_t fullParagraph = 40; // entries, from which on it ends with a sentence
constexpr std::size_t longestParagraph = 90;

/// Without anything that could be a blank, as nearly all words are.
bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c > ' ' && c <= '~'; });
}

std::string onOneLine(std::string_view text) {
    if (isPlain(text)) return std::string(text);
    std::string line;
    for (auto const word : writtenWords(text)) line.append(line.empty() ? "" : " ").append(word);
    return line;
}

bool endsSentence(std::string_view text) { return text.ends_with('.') || text.ends_with('?') || text.ends_with('!'); }

/// The entries so far, and what decides of the next one.
struct Writing {
    std::vector<TranscriptWord> const& words;
    std::vector<bool> isShown; // of the transcript's words
    CutWords cutWords;
    std::vector<Entry> entries;
    std::size_t inParagraph = 0;
    bool endsParagraph = true;
    double spokenUntil = 0; // output seconds

    void add(Entry entry) {
        bool const isFull =
            inParagraph >= longestParagraph || (inParagraph >= fullParagraph && endsSentence(entries.back().text));
        entry.beginsParagraph = endsParagraph || (isFull && entry.kind != Entry::Kind::pause);
        inParagraph = entry.beginsParagraph ? 1 : inParagraph + 1;
        endsParagraph = false;
        entries.push_back(std::move(entry));
    }
    void addPause(TimeRange const& range) {
        if (entries.empty() || range.duration <= PauseTightening{}.threshold) return;
        add({.kind = Entry::Kind::pause,
             .word = entries.back().word,
             .occurrence = entries.back().occurrence,
             .text = fmt::format("{:.1f}s", range.duration),
             .range = range});
        endsParagraph = range.duration > pauseOfParagraphs;
    }
    /// The words that are cut behind that one of the transcript, or before all that are shown.
    void addCutWords(std::size_t from) {
        if (cutWords == CutWords::hidden) return;
        for (auto i = from; i < words.size() && !isShown[i]; ++i) {
            auto text = onOneLine(words[i].text);
            if (text.empty() || !std::isfinite(words[i].start) || !std::isfinite(words[i].end)) continue;
            add({.kind = Entry::Kind::cutWord,
                 .word = words[i].id,
                 .text = std::move(text),
                 .range = {spokenUntil, 0},
                 .isFiller = words[i].isFiller()});
        }
    }
    void addWord(TimelineWord const& word, std::size_t occurrence) {
        auto text = onOneLine(word.word.text);
        if (text.empty()) text = "·"; // so that it can be seen and cut
        add({.word = word.word.id,
             .occurrence = occurrence,
             .text = std::move(text),
             .range = word.range,
             .isFiller = word.word.isFiller()});
        spokenUntil = std::max(spokenUntil, word.range.end());
    }
};

}

std::vector<TranscriptEntry> transcriptEntries(DemoProject const& project, CutWords cutWords) {
    if (!project.transcript) return {};
    auto const shown = timelineWords(project);
    Writing writing{.words = (*project.transcript)->words, .isShown = {}, .cutWords = cutWords};
    writing.isShown.resize(writing.words.size());
    std::vector<std::size_t> lastPlace(writing.words.size()), occurrences(writing.words.size()); // of its words
    for (std::size_t i = 0; i < shown.size(); ++i) {
        writing.isShown[shown[i].index] = true;
        lastPlace[shown[i].index] = i;
    }
    writing.entries.reserve(writing.words.size() + writing.words.size() / 8);
    writing.addCutWords(0);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        auto const& word = shown[i];
        if (i > 0) writing.addPause({writing.spokenUntil, word.range.start - writing.spokenUntil});
        writing.addWord(word, occurrences[word.index]++);
        if (lastPlace[word.index] == i) writing.addCutWords(word.index + 1);
    }
    return std::move(writing.entries);
}

}
