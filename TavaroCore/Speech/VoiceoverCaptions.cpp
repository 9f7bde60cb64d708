#include <TavaroCore/Speech/VoiceoverCaptions.h>

#include <TavaroCore/Captions/Private/SharedTime.h>
#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t mostCompared = 4'000'000; // pairs of words; a line has dozens

std::vector<std::string> bare(std::vector<std::string_view> const& words) {
    std::vector<std::string> result;
    for (auto const word : words) result.push_back(bareText(word));
    return result;
}

/// Which said word each written word is: the longest common subsequence of both.
std::vector<std::optional<std::size_t>> matched(std::vector<std::string> const& written,
                                                std::vector<std::string> const& said) {
    std::vector<std::optional<std::size_t>> matches(written.size());
    if (written.size() * said.size() > mostCompared) return matches;
    auto const width = said.size() + 1;
    std::vector<unsigned> common((written.size() + 1) * width);
    for (std::size_t i = written.size(); i-- > 0;) {
        for (std::size_t j = said.size(); j-- > 0;) {
            common[i * width + j] = written[i] == said[j]
                                        ? common[(i + 1) * width + j + 1] + 1
                                        : std::max(common[(i + 1) * width + j], common[i * width + j + 1]);
        }
    }
    for (std::size_t i = 0, j = 0; i < written.size() && j < said.size();) {
        if (written[i] == said[j])
            matches[i++] = j++;
        else if (common[(i + 1) * width + j] >= common[i * width + j + 1])
            ++i;
        else
            ++j;
    }
    return matches;
}

/// When the voice says something at last.
double endOf(TimeRange const& span, std::vector<CaptionWord> const& said) {
    double const end = said.empty() ? span.end() : said.back().end;
    return end > span.start ? std::min(end, span.end()) : span.end();
}

/// The voice's words where the film has them.
std::vector<CaptionWord> inFilm(std::vector<CaptionWord> words, VoiceoverSegment const& segment, double natural) {
    double const pace = natural > 0 ? segment.duration() / natural : 1;
    for (auto& word : words) {
        word.start = segment.start + word.start * pace;
        word.end = segment.start + word.end * pace;
    }
    std::erase_if(words, [&](CaptionWord const& word) { return word.start >= segment.end(); });
    return words;
}

double naturalDuration(DemoProject const& project, VoiceoverSegment const& segment) {
    auto const known = project.assetDurations.find(*segment.audioAsset);
    bool const isWhole = known != project.assetDurations.end() && !segment.isDirty;
    return isWhole ? known->second : segment.duration();
}

std::vector<CaptionWord> wordsOf(DemoProject const& project, VoiceoverSegment const& segment, SaidWords const& said) {
    std::vector<CaptionWord> heard;
    if (segment.audioAsset) heard = inFilm(said(*segment.audioAsset), segment, naturalDuration(project, segment));
    return wordsAsSaid(segment.text, {segment.start, segment.duration()}, heard);
}

}

std::vector<CaptionWord> wordsAsSaid(std::string const& text, TimeRange const& span,
                                     std::vector<CaptionWord> const& said) {
    auto const written = writtenWords(text);
    std::vector<std::string_view> saidTexts;
    for (auto const& word : said) saidTexts.push_back(word.text);
    auto const matches = matched(bare(written), bare(saidTexts));
    std::vector<CaptionWord> words;
    double free = said.empty() ? span.start : std::max(said.front().start, span.start);
    for (std::size_t i = 0; i < written.size();) {
        if (auto const match = matches[i]) {
            auto const& [ignored, start, end] = said[*match];
            words.push_back({std::string(written[i++]), std::max(start, free), std::max(end, free)});
            free = words.back().end;
            continue;
        }
        auto known = i;
        while (known < written.size() && !matches[known]) ++known;
        double const end = std::max(known < written.size() ? said[*matches[known]].start : endOf(span, said), free);
        for (auto& word : wordsByLength({free, end - free}, {written.begin() + static_cast<std::ptrdiff_t>(i),
                                                             written.begin() + static_cast<std::ptrdiff_t>(known)}))
            words.push_back(std::move(word));
        free = end;
        i = known;
    }
    return words;
}

std::vector<CaptionCue> captionCuesFromVoiceover(DemoProject const& project, SaidWords const& said,
                                                 CaptionBreaks const& breaks) {
    if (!project.voiceover) return {};
    std::vector<VoiceoverSegment const*> segments;
    for (auto const& segment : project.voiceover->segments) segments.push_back(&segment);
    std::ranges::stable_sort(segments, {}, &VoiceoverSegment::start);
    std::vector<CaptionWord> words;
    for (auto const* const segment : segments)
        for (auto& word : wordsOf(project, *segment, said)) words.push_back(std::move(word));
    return captionCues(std::move(words), breaks);
}

}
