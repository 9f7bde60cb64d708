#include <TavaroVoice/Script/AutoDirectorScript.h>

#include <TavaroVoice/Script/Private/ScriptMoments.h>
#include <TavaroVoice/Script/Private/ScriptSentences.h>
#include <TavaroVoice/Script/Private/ShownEvents.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

using Beat = AutoDirectorScript::Beat;
using Style = AutoDirectorScript::Style;

constexpr double breath = 0.5;           // seconds between two lines
constexpr double socialBreath = 1.5;     // a clip that is kept short leaves more unsaid
constexpr double patience = 1;           // a line may come so much later than what it is about
constexpr double restBehind = 0.3;       // the film goes on for a moment after the last word
constexpr double longestIntroduced = 60; // "just a few seconds" is true of no longer film
constexpr int manyKeys = 30;             // of a text in several sentences
constexpr std::size_t lookAhead = 32;    // moments

// Scripts show hundredths, so lines begin at them.
double nextHundredth(double time) { return std::ceil(time * 100 - 1e-6) / 100; }
double lastHundredth(double time) { return std::floor(time * 100 + 1e-6) / 100; }

/// How much is lost to who watches when it is left out.
int worth(Beat::Kind kind) {
    switch (kind) {
    case Beat::Kind::appSwitch: return 3;
    case Beat::Kind::typing:
    case Beat::Kind::drag: return 2;
    default: return 1;
    }
}

/// The last time at which a line about it can begin. A stretch can be told of as long as it goes on.
double latestStart(ScriptMoment const& moment) { return std::max(moment.start + patience, moment.end - patience); }

class Writing {
public:
    Writing(AutoDirectorScript const& script, DemoProject const& project)
        : style_(script.style)
        , mode_(project.mode)
        , duration_(project.duration())
        , breath_(script.style == Style::social ? socialBreath : breath)
        , product_(productOf(script, project))
        , moments_(scriptMoments(project)) {}

    std::vector<Beat> write() {
        say(Beat::Kind::opening, 0, sentences::opening(style_, mode_, product_));
        auto const closing = sentences::closing(style_, mode_, product_);
        auto const closingStart = startOfClosing(closing);
        end_ = closingStart ? *closingStart - breath_ : duration_;
        introduce();
        for (std::size_t i = 0; i < moments_.size(); ++i) consider(i);
        if (closingStart) say(Beat::Kind::closing, *closingStart, closing);
        return std::move(beats_);
    }

private:
    static std::optional<std::string> productOf(AutoDirectorScript const& script, DemoProject const& project) {
        auto const given = spokenName(script.productName);
        return given.empty() || bareText(given) == "this" ? demonstratedApp(project) : given;
    }

    void say(Beat::Kind kind, double time, std::string text, ScriptMoment const* moment = nullptr) {
        free_ = time + sentences::spokenSeconds(text) + breath_;
        Beat beat{.time = time, .text = std::move(text), .kind = kind, .position = {}};
        if (moment) beat.position = moment->position;
        if (moment && !moment->app.empty()) beat.app = moment->app;
        beats_.push_back(std::move(beat));
    }

    /// None in a film that is too short for an opening and a closing.
    std::optional<double> startOfClosing(std::string const& line) const {
        double const latest = duration_ - sentences::spokenSeconds(line);
        double const start = lastHundredth(std::max(latest - restBehind, std::min(latest, free_)));
        return start >= free_ - 0.01 ? std::optional(start) : std::nullopt;
    }

    /// The time until something happens is not silent.
    void introduce() {
        bool const isWanted = style_ == Style::demo || style_ == Style::launch || style_ == Style::pitch;
        if (!isWanted || duration_ > longestIntroduced) return;
        std::string const line(sentences::walkThrough());
        double const start = nextHundredth(free_), end = start + sentences::spokenSeconds(line);
        bool const isQuiet = moments_.empty() || moments_.front().start >= end + breath_;
        if (isQuiet && end <= end_) say(Beat::Kind::opening, start, line);
    }

    void consider(std::size_t index) {
        auto const& moment = moments_[index];
        double const start = nextHundredth(std::max(moment.start, free_));
        if (start > latestStart(moment) + 0.01) return;
        auto line = lineOf(moment);
        double const end = start + sentences::spokenSeconds(line);
        if (end > end_ || isWorthLess(index, end + breath_)) return;
        say(moment.kind, start, std::move(line), &moment);
        if (moment.kind == Beat::Kind::typing) lastTyping_ = typingNumber(moment);
        ++count(moment.kind);
        spoken_ = &moment;
    }

    /// Whether something that is worth more would be missed when a line is spoken until then.
    bool isWorthLess(std::size_t index, double until) const {
        auto const last = std::min(index + 1 + lookAhead, moments_.size());
        for (auto i = index + 1; i < last && moments_[i].start < until; ++i) {
            bool const isMissed = latestStart(moments_[i]) < until && moments_[i].start < end_ - patience;
            if (isMissed && worth(moments_[i].kind) > worth(moments_[index].kind)) return true;
        }
        return false;
    }

    std::string lineOf(ScriptMoment const& moment) {
        auto const number = count(moment.kind);
        auto const& before = beats_.back();
        switch (moment.kind) {
        case Beat::Kind::typing: return sentences::typing(typingNumber(moment));
        case Beat::Kind::drag: return sentences::drag(number);
        case Beat::Kind::appSwitch: return sentences::appSwitch(number, moment.app, moment.isReturn, before.text);
        case Beat::Kind::shortcut:
            if (before.kind != Beat::Kind::shortcut) return sentences::shortcut(moment.keys);
            return sentences::nextShortcut(number, moment.keys, moment.keys == spoken_->keys, before.text);
        default: return sentences::click(number, *moment.position);
        }
    }

    /// Which line fits what is typed, unless the typing before had it. In a terminal each command ends as a search
    /// does, so there it is their turn.
    std::size_t typingNumber(ScriptMoment const& moment) {
        if (mode_ == DemoMode::terminal) return count(moment.kind) % 3;
        bool const isDetails = moment.hasTab || moment.keyCount >= manyKeys;
        std::size_t const fitting = isDetails ? 1 : moment.endsInEnter ? 0 : 2;
        return fitting == lastTyping_ ? (fitting + 1) % 3 : fitting;
    }

    std::size_t& count(Beat::Kind kind) { return counts_[static_cast<std::size_t>(kind)]; }

    Style const style_;
    DemoMode const mode_;
    double const duration_;
    double const breath_;
    std::optional<std::string> const product_;
    std::vector<ScriptMoment> const moments_;
    std::vector<Beat> beats_;
    std::array<std::size_t, 7> counts_{};  // lines of each kind
    ScriptMoment const* spoken_ = nullptr; // what the last line is about
    std::optional<std::size_t> lastTyping_;
    double free_ = 0; // when the next line may begin
    double end_ = 0;  // when the last line before the closing has to be over
};

}

std::string_view displayName(AutoDirectorScript::Style style) {
    static constexpr std::array<std::string_view, 5> names{"Product demo", "Launch clip", "Tutorial", "Pitch",
                                                           "Social"};
    return names[static_cast<std::size_t>(style)];
}

std::string_view detailOf(AutoDirectorScript::Style style) {
    static constexpr std::array<std::string_view, 5> details{"Show how it works",
                                                             "Announce it, end on a call to action", "Teach the steps",
                                                             "Lead with the outcome", "Hook first, keep it short"};
    return details[static_cast<std::size_t>(style)];
}

std::vector<Beat> AutoDirectorScript::beats(DemoProject const& project) const {
    if (!(project.duration() > 0)) return {};
    return Writing(*this, project).write();
}

}
