#include <TavaroCore/Editing/RestoredWords.h>
#include <TavaroCore/Editing/TranscriptEdits.h>

#include "../Speech/SpokenFilm.h"

#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Speech/TimelineWords.h>

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <random>

using namespace tavaro;
using ::testing::IsEmpty;

namespace {

std::string drawn(DemoProject const& project) {
    std::string text;
    for (auto const& [word, range, index] : timelineWords(project)) {
        text += fmt::format("{}{} {:.4g}-{:.4g}", text.empty() ? "" : ", ", word.text, range.start, range.end());
    }
    return text;
}

std::string drawn(std::vector<TimeRange> const& ranges) {
    std::string text;
    for (auto const& range : ranges) text += fmt::format("[{:.4g} {:.4g}]", range.start, range.end());
    return text;
}

/// The cuts that deleting "x" makes in a minute of these words.
std::string cutsFor(std::vector<Said> words) {
    for (auto& word : words) {
        if (word.text == "x") word.text = "um";
    }
    return drawn(fillerRanges(spokenFilm(words)));
}

std::string textOf(DemoProject const& project) {
    std::string text;
    for (auto const& word : timelineWords(project)) {
        if (!text.empty()) text += ' ';
        text += word.word.text;
    }
    return text;
}

/// "one" at 1, "two" at 2 …, each half a second long.
DemoProject counting(std::vector<std::string> const& texts) {
    std::vector<Said> words;
    for (auto const& text : texts) {
        double const start = static_cast<double>(words.size() + 1);
        words.push_back({text, start, start + 0.5});
    }
    return spokenFilm(words, static_cast<double>(texts.size() + 2));
}

DemoProject randomFilm(std::mt19937& random) {
    static std::vector<std::string> const vocabulary = {"a", "b", "c", "d.", "Um,", "e", "uh", "going to"};
    std::vector<Said> words;
    double time = 0.5;
    for (std::size_t i = 0, count = 1 + random() % 40; i < count; ++i) {
        double gap = random() % 2 ? 0 : 0.001 * static_cast<double>(random() % 300);
        if (random() % 8 == 0) gap = 0.001 * static_cast<double>(random() % 3000);
        if (random() % 16 == 0) gap = -0.05; // words that overlap
        double const start = time + gap, end = start + 0.02 + 0.001 * static_cast<double>(random() % 500);
        words.push_back({vocabulary[random() % vocabulary.size()], start, end});
        time = end;
    }
    return spokenFilm(words, time + 2);
}

std::vector<UUID> randomWords(DemoProject const& film, std::mt19937& random) {
    std::vector<UUID> chosen;
    for (auto const& word : (*film.transcript)->words) {
        if (random() % 3 == 0) chosen.push_back(word.id);
    }
    return chosen;
}

}

TEST(RemoveRanges, rangesAreThoseOfTheTimelineBeforeAnyWasRemoved) {
    auto const words = std::vector<Said>{{"a", 0, 1}, {"b", 2, 3}, {"c", 4, 5}, {"d", 6, 7}};
    auto film = spokenFilm(words, 10);
    EXPECT_DOUBLE_EQ(removeRanges(film, {{5, 1}, {1, 0.6}, {1.5, 0.5}, {8, 0.01}, {9, -1}, {std::nan(""), 1}}), 2);
    EXPECT_EQ(drawn(film), "a 0-1, b 1-2, c 3-4, d 4-5");
    EXPECT_NEAR(removeRanges(film, {{0, 0.005}, {0.005, 0.006}}), 0.011, 1e-9) << "short ranges that touch are one";
    EXPECT_EQ(removeRanges(film, {}), 0);
}

TEST(TightenPauses, eachKeepsTheSameSilenceOnBothSides) {
    auto film = spokenFilm({{"a", 0, 1}, {"b", 2, 3}, {"c", 3.34, 4}, {"d", 6, 7}}, 10);
    auto untouched = film;
    EXPECT_EQ(tightenPauses(untouched, {.threshold = 2.5, .keep = 0.3}), TranscriptCut{});
    auto const tightened = tightenPauses(film, {.threshold = 0.32, .keep = 0.3});
    EXPECT_EQ(tightened.count, 2u) << "a pause of 0.34 s would lose too little";
    EXPECT_NEAR(tightened.seconds, 0.7 + 1.7, 1e-9);
    EXPECT_EQ(drawn(film), "a 0-1, b 1.3-2.3, c 2.64-3.3, d 3.6-4.6");
    EXPECT_NEAR(film.timeline.clips[0].duration, 1.15, 1e-9);
    EXPECT_NEAR(film.timeline.clips[1].sourceStart, 1.85, 1e-9);
    EXPECT_EQ(tightenPauses(film, {.threshold = 0.32, .keep = 0.3}).count, 0u) << "once is enough";
}

TEST(DeleteWords, aCutTakesTheWordAndTheSilenceThatItWouldLeaveTwice) {
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 2.4, 3}, {"b", 3.5, 4}}), "[2.08 3.08]") << "the longer silence stays";
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 2.5, 3}, {"b", 3.4, 4}}), "[2.42 3.32]");
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 2, 3}, {"b", 3, 4}}), "[2 3]") << "no silence, nothing but the word";
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 2.1, 3}, {"b", 3.04, 4}}), "[2.05 3.02]") << "half of a short silence";
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 7, 8}, {"b", 20, 21}}), "[6.5 8.08]") << "a long silence shows something";
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 1.9, 3}, {"b", 2.8, 4}}), "[2 2.8]") << "never of a word that stays";
    EXPECT_EQ(cutsFor({{"a", 1, 5}, {"x", 2, 3}, {"b", 6, 7}}), "");
}

TEST(DeleteWords, theFirstAndTheLastLeaveTheSilenceAroundTheSpeech) {
    EXPECT_EQ(cutsFor({{"x", 5, 6}, {"b", 6.1, 7}}), "[4.92 6.05]");
    EXPECT_EQ(cutsFor({{"x", 0.05, 1}, {"b", 2, 3}}), "[0 1.08]");
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 3, 4}}), "[2.92 4.08]");
    EXPECT_EQ(cutsFor({{"x", 3, 4}}), "[2.92 4.08]");
}

TEST(DeleteWords, neighboursGoTogetherUnlessMuchIsSilentBetweenThem) {
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 2.1, 3}, {"x", 4, 5}, {"b", 5.1, 6}}), "[2.05 5.05]");
    EXPECT_EQ(cutsFor({{"a", 1, 2}, {"x", 2.1, 3}, {"x", 5, 6}, {"b", 6.1, 7}}), "[2.05 3.08][4.92 6.05]");
}

TEST(DeleteWords, wordsAreChosenByTheirIdentity) {
    auto film = spokenFilm({{"open", 1, 1.5}, {"the", 1.5, 1.8}, {"the", 1.8, 2}, {"door", 2, 2.5}});
    auto const transcript = *film.transcript;
    UUID const second = transcript->words[2].id;
    std::vector<UUID> const chosen = {second, UUID::random()};
    auto const cut = deleteWords(film, chosen);
    EXPECT_EQ(cut.count, 1u);
    EXPECT_NEAR(cut.seconds, 0.2, 1e-9);
    EXPECT_EQ(drawn(film), "open 1-1.5, the 1.5-1.8, door 1.8-2.3");
    EXPECT_TRUE(film.transcript->sharesWith(transcript)) << "the words are hidden, not forgotten";
    EXPECT_EQ(deleteWords(film, chosen), TranscriptCut{}) << "they are not shown any more";
    DemoProject silent;
    EXPECT_EQ(deleteWords(silent, chosen), TranscriptCut{});
    EXPECT_EQ(removeFillers(silent), TranscriptCut{});
    EXPECT_EQ(tightenPauses(silent), TranscriptCut{});
}

TEST(DeleteWords, randomDeletionsTakeTheChosenWordsAndNoTimeOfTheOthers) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(fmt::format("seed {}", seed));
        std::mt19937 random(seed);
        auto film = randomFilm(random);
        if (random() % 2) tightenPauses(film); // cuts that were there before
        auto const chosen = randomWords(film, random);
        auto const isChosen = [&](TimelineWord const& word) {
            return std::find(chosen.begin(), chosen.end(), word.word.id) != chosen.end();
        };
        auto before = timelineWords(film);
        auto const overlaps = [&](TimelineWord const& word) {
            return std::any_of(before.begin(), before.end(), [&](TimelineWord const& other) {
                return !isChosen(other) && other.range.intersects(word.range);
            });
        };
        std::vector<TimelineWord> kept;
        for (auto const& word : before) {
            if (!isChosen(word)) kept.push_back(word);
        }
        double const length = film.duration();
        auto const cut = deleteWords(film, chosen);
        EXPECT_NEAR(length - film.duration(), cut.seconds, 1e-9);
        auto const after = timelineWords(film);
        std::size_t next = 0;
        for (auto const& word : after) {
            if (isChosen(word)) {
                auto const was =
                    std::find_if(before.begin(), before.end(), [&](auto const& b) { return b.index == word.index; });
                EXPECT_TRUE(overlaps(*was)) << word.word.text << " is still there";
                continue;
            }
            ASSERT_LT(next, kept.size());
            EXPECT_EQ(word.index, kept[next].index);
            EXPECT_NEAR(word.range.duration, kept[next].range.duration, 0.0011) << word.word.text;
            ++next;
        }
        EXPECT_EQ(next, kept.size());
    }
}

TEST(ReplaceTranscriptText, missingWordsAreCutAndChangedOnesKeepTheirTimes) {
    auto film = counting({"Open", "the", "wrold", "um,", "map"});
    auto const result = replaceTranscriptText(film, "Open  the world\nmap.");
    EXPECT_EQ(result.deleted, 1u);
    EXPECT_EQ(result.corrected, 2u) << "a spelling and a full stop";
    EXPECT_EQ(result.inserted, 0u);
    EXPECT_EQ(drawn(film), "Open 1-1.5, the 2-2.5, world 3-3.5, map. 4-4.5") << "the pause after um stays";
    EXPECT_NEAR(result.seconds, 1, 1e-9);
    EXPECT_EQ((*film.transcript)->words[2].start, 3);
    EXPECT_EQ((*film.transcript)->words[3].text, "um,") << "what is cut can come back";
}

TEST(ReplaceTranscriptText, aChangedWordIsTheOneThatItResembles) {
    auto film = counting({"that", "was", "really", "amasing", "today"});
    replaceTranscriptText(film, "that was amazing today");
    EXPECT_EQ(textOf(film), "that was amazing today");
    EXPECT_EQ((*film.transcript)->words[3].text, "amazing");
    film = counting({"we", "gonna", "win"});
    auto const result = replaceTranscriptText(film, "We are going to win");
    EXPECT_EQ(textOf(film), "We are going to win");
    EXPECT_EQ(result.inserted, 2u);
    EXPECT_EQ(result.deleted, 0u);
    EXPECT_EQ(film.duration(), 5);
}

TEST(ReplaceTranscriptText, whatNobodySpokeIsWrittenToItsNeighbour) {
    auto film = counting({"hello.", "big", "house"});
    EXPECT_EQ(replaceTranscriptText(film, "Oh hello. The very big house there").inserted, 4u);
    auto const words = timelineWords(film);
    ASSERT_EQ(words.size(), 3u);
    EXPECT_EQ(words[0].word.text, "Oh hello.");
    EXPECT_EQ(words[1].word.text, "The very big");
    EXPECT_EQ(words[2].word.text, "house there");
    auto const before = film;
    EXPECT_EQ(replaceTranscriptText(film, "Oh hello. The very big house there"), TranscriptReplacement{});
    EXPECT_EQ(film, before);
    EXPECT_EQ(replaceTranscriptText(film, "hello. The big house").corrected, 3u);
    EXPECT_EQ(textOf(film), "hello. The big house");
}

TEST(ReplaceTranscriptText, anEmptyTextCutsEveryWordAndASilentFilmTakesNone) {
    auto film = counting({"one", "two"});
    EXPECT_EQ(replaceTranscriptText(film, " ").deleted, 2u);
    EXPECT_THAT(timelineWords(film), IsEmpty());
    EXPECT_EQ(replaceTranscriptText(film, ""), TranscriptReplacement{});
    EXPECT_THROW(replaceTranscriptText(film, "three"), TranscriptError);
    film.transcript.reset();
    EXPECT_THROW(replaceTranscriptText(film, ""), TranscriptError);
}

TEST(ReplaceTranscriptText, afterRandomEditsTheFilmSaysTheTextAndUnchangedWordsKeepTheirTimes) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(fmt::format("seed {}", seed));
        std::mt19937 random(seed);
        std::vector<std::string> texts;
        for (std::size_t i = 0, count = 1 + random() % 60; i < count; ++i)
            texts.push_back(fmt::format("w{}", random() % 30));
        auto film = counting(texts);
        auto const before = *film.transcript;
        std::string edited;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            if (random() % 5 != 0)
                edited += texts[i] + " ";
            else if (random() % 2)
                edited += fmt::format("n{} ", random() % 30);
            if (random() % 12 == 0) edited += "new ";
        }
        auto const result = replaceTranscriptText(film, edited);
        if (!edited.empty()) edited.pop_back();
        EXPECT_EQ(textOf(film), edited);
        auto const& after = (*film.transcript)->words;
        ASSERT_EQ(after.size(), texts.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(after[i].id, before->words[i].id);
            EXPECT_EQ(after[i].start, before->words[i].start);
            EXPECT_EQ(after[i].end, before->words[i].end);
        }
        EXPECT_EQ(timelineWords(film).size(), texts.size() - result.deleted);
        auto const again = film;
        EXPECT_EQ(replaceTranscriptText(film, edited), TranscriptReplacement{});
        EXPECT_EQ(film, again);
    }
}

TEST(TranscriptRestoring, restoredWordsAreWhereTheyWereWithWhatIsSaidBesideThem) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<std::string> texts;
        for (int i = 0; i < 12; ++i) texts.push_back("w" + std::to_string(i));
        auto project = counting(texts);
        project.assetDurations["screen.mp4"] = project.duration();
        auto const whole = textOf(project);
        std::vector<UUID> cut;
        for (auto const& word : (*project.transcript)->words) {
            if (random() % 3 == 0) cut.push_back(word.id);
        }
        if (cut.size() == texts.size()) cut.pop_back();
        deleteWords(project, cut);
        auto const length = project.duration();
        auto const back = std::vector(cut.begin(), cut.begin() + static_cast<std::ptrdiff_t>(cut.size() / 2));
        auto const rest = std::vector(cut.begin() + static_cast<std::ptrdiff_t>(cut.size() / 2), cut.end());
        auto const gained = restoreWords(project, back);
        EXPECT_NEAR(gained, project.duration() - length, 1e-9);
        auto const half = textOf(project);
        for (auto const& word : (*project.transcript)->words) {
            bool const isLeftOut = std::ranges::find(rest, word.id) != rest.end();
            EXPECT_EQ((half + " ").find(word.text + " ") == std::string::npos, isLeftOut)
                << word.text << " of " << half;
        }
        restoreWords(project, cut);
        EXPECT_EQ(textOf(project), whole);
        EXPECT_LE(project.duration(), static_cast<double>(texts.size() + 2) + 1e-6) << "nothing is shown twice";
        EXPECT_EQ(restoreWords(project, cut), 0) << "they are shown already";
    }
}

TEST(TranscriptRestoring, aWordFarFromAnyClipComesBackAloneAndWithItsSound) {
    auto project = counting({"a", "b", "c", "d", "e", "f", "g", "h", "i"});
    project.assetDurations = {{"screen.mp4", 11}, {"mic.m4a", 11}};
    project.audioTracks = {{.role = AudioRole::microphone, .clips = {{.asset = "mic.m4a", .duration = 11}}}};
    removeTimeRange(project, 1.9, 6.3);
    ASSERT_EQ(textOf(project), "a h i"); // h, at 8, is shown for the most part
    auto const d = (*project.transcript)->words[3].id;
    EXPECT_NEAR(restoreWords(project, std::array{d}), 0.66, 1e-6);
    EXPECT_EQ(textOf(project), "a d h i");
    double sound = 0;
    for (auto const& clip : project.audioTracks[0].clips) sound += clip.duration;
    EXPECT_NEAR(sound, project.duration(), 1e-6);
}
