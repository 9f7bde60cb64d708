#include <Tavaro/Studio/Editor/CaptionEdits.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace tavaro {

namespace {

constexpr double shortest = 0.1; // seconds of a caption that was split off, as far as there is room

auto find(DemoProject& project, UUID const& caption) {
    return std::ranges::find(project.captions.cues, caption, &CaptionCue::id);
}

bool hasTimedWords(CaptionCue const& cue) { return cue.words.size() == writtenWords(cue.text).size(); }

/// When the text from that byte on is spoken.
double timeOf(CaptionCue const& cue, std::size_t byte) {
    for (auto const& part : spokenParts(cue)) {
        if (static_cast<std::size_t>(part.text.data() - cue.text.data()) >= byte) return part.start;
    }
    auto const share = static_cast<double>(byte) / static_cast<double>(cue.text.size());
    return cue.start + share * cue.duration; // inside of the last word
}

double within(CaptionCue const& cue, double time) {
    auto const margin = std::min(shortest, cue.duration / 2);
    return std::clamp(time, cue.start + margin, cue.range().end() - margin);
}

}

void setCaptionText(DemoProject& project, UUID const& caption, std::string_view text) {
    auto const cue = find(project, caption);
    if (cue == project.captions.cues.end()) return;
    auto const words = writtenWords(text);
    if (words.size() != cue->words.size()) cue->words.clear();
    for (std::size_t i = 0; i < cue->words.size(); ++i) cue->words[i].text = words[i];
    cue->text = trimmed(text);
}

void splitCaption(DemoProject& project, UUID const& caption, std::size_t byte) {
    auto const cue = find(project, caption);
    if (cue == project.captions.cues.end() || byte > cue->text.size()) return;
    auto const before = trimmed(std::string_view(cue->text).substr(0, byte));
    auto const behind = trimmed(std::string_view(cue->text).substr(byte));
    if (before.empty() || behind.empty()) return;
    auto const time = within(*cue, timeOf(*cue, byte));
    auto const count = writtenWords(before).size();
    CaptionCue second{.start = time, .duration = cue->range().end() - time, .text = std::string(behind)};
    if (hasTimedWords(*cue) && count + writtenWords(behind).size() == cue->words.size())
        second.words.assign(cue->words.begin() + static_cast<std::ptrdiff_t>(count), cue->words.end());
    cue->words.resize(second.words.empty() ? 0 : count);
    cue->text = before;
    cue->duration = time - cue->start;
    project.captions.cues.insert(std::next(cue), std::move(second));
}

void joinCaptionWithNext(DemoProject& project, UUID const& caption) {
    auto& cues = project.captions.cues;
    auto const cue = find(project, caption);
    if (cue == cues.end()) return;
    auto next = cues.end();
    for (auto each = cues.begin(); each != cues.end(); ++each) {
        bool const isBehind = each != cue && (each->start > cue->start || (each->start == cue->start && each > cue));
        if (isBehind && (next == cues.end() || each->start < next->start)) next = each;
    }
    if (next == cues.end()) return;
    bool const areTimed = hasTimedWords(*cue) && hasTimedWords(*next);
    if (areTimed)
        cue->words.insert(cue->words.end(), next->words.begin(), next->words.end());
    else
        cue->words.clear();
    cue->text.append(cue->text.empty() || next->text.empty() ? "" : " ").append(next->text);
    cue->duration = std::max(cue->range().end(), next->range().end()) - cue->start;
    cues.erase(next);
}

}
