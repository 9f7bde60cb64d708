#include <Tavaro/Commands/FindingTable.h>

#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>
#include <string>

namespace tavaro::commands {

namespace {

std::string timeText(double seconds) { return Timecode::format(seconds, Timecode::Fraction::hundredths); }

std::string spanText(double from, double to) { return fmt::format("{}–{}", timeText(from), timeText(to)); }

std::string timesOf(ListedFinding const& finding) {
    if (finding.shown.empty()) return "not in the film";
    auto const& first = finding.shown.front();
    auto text = spanText(first.start, first.end());
    if (auto const more = finding.shown.size() - 1; more > 0) text += fmt::format(" and {} more", more);
    return text;
}

std::string stateOf(ListedFinding const& finding) {
    if (finding.isByHand) return finding.state == FindingState::rejected ? "by hand, off" : "by hand";
    return std::string(nameOf(finding.state));
}

}

void printFindings(std::vector<ListedFinding> const& findings) {
    std::size_t widest = 0;
    for (auto const& finding : findings) widest = std::max(widest, finding.id.size());
    for (auto const& finding : findings) {
        terminal::say("{:<{}}  {:<12}  {:<24}  {:<21}  {}\n", finding.id, widest, displayName(finding.kind),
                      finding.masked, timesOf(finding), stateOf(finding));
        if (finding.picture) terminal::say("{:<{}}  {}\n", "", widest, *finding.picture);
    }
}

void printLegible(std::vector<LegibleText> const& texts) {
    for (auto const& text : texts)
        terminal::say("{:<17}  {:<12}  {:<24}  {}\n", spanText(text.start, text.end), displayName(text.kind),
                      text.masked, remarkOn(text));
}

}
