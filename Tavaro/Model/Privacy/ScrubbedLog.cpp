#include <Tavaro/Model/Privacy/Private/ScrubbedLog.h>

#include <Tavaro/Model/Privacy/Private/SourceRanges.h>

#include <TavaroCore/Recording/MaskedTyping.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

constexpr double shownLate = 1;    // seconds from a key to its letter on the screen, where a program is slow
constexpr double loggedLate = 0.3; // the other way round: frames and keys have clocks of their own

std::vector<TimeRange> typingOf(std::vector<TimeRange> const& typed) {
    std::vector<TimeRange> ranges;
    for (auto const& range : typed)
        ranges.push_back({range.start - shownLate, range.duration + shownLate + loggedLate});
    return joinedRanges(std::move(ranges));
}

bool isInside(std::vector<TimeRange> const& ranges, double t) {
    auto const next = std::ranges::upper_bound(ranges, t, {}, &TimeRange::start);
    return next != ranges.begin() && t <= (next - 1)->end();
}

/// Knows names that hold a secret, whole or as one of their words.
class NameScrubber {
public:
    explicit NameScrubber(SecretsOfLog const& secrets) : secrets_(secrets) {}

    bool holds(std::string const& name) {
        auto const [known, isNew] = known_.try_emplace(name, false);
        if (isNew) known->second = holdsAny(name);
        return known->second;
    }
    bool holds(std::optional<std::string> const& name) { return name && holds(*name); }

private:
    bool isSecret(std::string_view text) const { return secrets_.hashes.contains(findingHash(text, secrets_.key)); }
    bool holdsAny(std::string_view name) const {
        static constexpr std::string_view borders = " \t()[]<>{}\"'|,;";
        if (isSecret(name)) return true;
        while (!name.empty()) {
            auto const word = name.substr(0, name.find_first_of(borders));
            if (!word.empty() && isSecret(word)) return true;
            name.remove_prefix(std::min(word.size() + 1, name.size()));
        }
        return false;
    }

    SecretsOfLog const& secrets_;
    std::map<std::string, bool> known_;
};

template<class Event> bool holdsSecret(std::vector<Event> const& events, NameScrubber& names) {
    return std::ranges::any_of(events, [&](Event const& event) { return names.holds(event.application); });
}

bool hasSecretNames(RecordingMetadata const& log, NameScrubber& names) {
    return holdsSecret(log.clicks, names) || holdsSecret(log.keystrokes, names) ||
           std::ranges::any_of(log.appSpans, [&](auto const& span) { return names.holds(span.name); });
}

void scrubNames(RecordingMetadata& log, NameScrubber& names) {
    std::string const hidden(maskedKey);
    for (auto& click : log.clicks)
        if (names.holds(click.application)) click.application = hidden;
    for (auto& stroke : log.keystrokes)
        if (names.holds(stroke.application)) stroke.application = hidden;
    for (auto& span : log.appSpans)
        if (names.holds(span.name)) span.name = hidden;
}

}

std::size_t scrubLog(CopyOnWrite<RecordingMetadata>& log, SecretsOfLog const& secrets) {
    auto const typing = typingOf(secrets.typed);
    std::size_t masked = 0;
    auto strokes = log->keystrokes;
    for (auto& stroke : strokes)
        if (isInside(typing, stroke.t) && maskTyping(stroke)) ++masked;
    NameScrubber names(secrets);
    bool const hasNames = !secrets.hashes.empty() && hasSecretNames(*log, names);
    if (masked > 0) log.edit().keystrokes = std::move(strokes);
    if (hasNames) scrubNames(log.edit(), names);
    return masked;
}

}
