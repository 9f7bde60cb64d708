#include <TavaroVoice/Script/Private/ScriptMoments.h>

#include <TavaroVoice/Script/Private/ShownEvents.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

using Kind = AutoDirectorScript::Beat::Kind;
using Use = ShownEvent::Key::Use;

// Seconds between the end of one and the start of the next for both to be one moment.
constexpr double closeClicks = 0.8;
constexpr double clicksInPlace = 2;   // of a stepper, a list that is walked through
constexpr double samePlace = 0.03;    // of the picture
constexpr double longestClicking = 5; // seconds of one moment of clicks
constexpr double closeKeys = 3;
constexpr double closeDrags = 3; // strokes of one drawing
constexpr double repeatedShortcut = 2;
constexpr double shortcutInTyping = 1;
constexpr double clickBeforeTyping = 2;
constexpr double causeOfSwitch = 1.5; // a click or shortcut that brings another application to the front
constexpr double clickIntoWindow = 0.3;
// Less than that is no typing: an answer, a key that scrolls.
constexpr int fewestKeys = 3, fewestTexts = 2;

/// Makes moments of events that come in their order.
class Merging {
public:
    void add(ShownEvent const& event) {
        std::visit([&](auto const& what) { take(event, what); }, event.what);
    }

    std::vector<ScriptMoment> finish() {
        std::erase_if(runs_, [](Run const& run) {
            return run.moment.kind == Kind::typing && (run.moment.keyCount < fewestKeys || run.texts < fewestTexts);
        });
        std::vector<ScriptMoment> result;
        for (auto& run : runs_) {
            auto& moment = run.moment;
            if (!result.empty() && moment.kind == Kind::typing && result.back().kind == Kind::click &&
                moment.start - result.back().end <= clickBeforeTyping) {
                moment.start = result.back().start;
                moment.position = result.back().position;
                result.pop_back();
            }
            result.push_back(std::move(moment));
        }
        return result;
    }

private:
    struct Run {
        ScriptMoment moment;
        int texts = 0; // of typing: keys that write something
    };

    Run* last(Kind kind) { return !runs_.empty() && runs_.back().moment.kind == kind ? &runs_.back() : nullptr; }
    /// Whether the last moment is of that kind, and ended no longer ago than that.
    bool follows(ShownEvent const& event, Kind kind, double seconds) {
        auto const* const run = last(kind);
        return run && event.start - run->moment.end <= seconds;
    }
    ScriptMoment& begin(ShownEvent const& event, Kind kind) {
        return runs_.emplace_back(Run{{.kind = kind, .start = event.start, .end = event.end, .app = event.app}}).moment;
    }
    void extend(ShownEvent const& event) {
        auto& moment = runs_.back().moment;
        moment.end = std::max(moment.end, event.end);
    }

    void take(ShownEvent const& event, ShownEvent::Click const& click) {
        if (click.isDrag) {
            if (follows(event, Kind::drag, closeDrags)) return extend(event);
            begin(event, Kind::drag).position = click.position;
        } else if (follows(event, Kind::appSwitch, clickIntoWindow)) {
            return;
        } else if (continuesClicks(event, click)) {
            extend(event);
        } else {
            begin(event, Kind::click).position = click.position;
        }
    }

    bool continuesClicks(ShownEvent const& event, ShownEvent::Click const& click) {
        if (!follows(event, Kind::click, clicksInPlace)) return false;
        auto const& moment = runs_.back().moment;
        if (event.start - moment.start > longestClicking) return false;
        return event.start - moment.end <= closeClicks || click.position.distance(*moment.position) <= samePlace;
    }

    void take(ShownEvent const& event, ShownEvent::Key const& key) {
        leaveOutShortcutInTyping(event);
        if (!follows(event, Kind::typing, closeKeys)) {
            if (key.use != Use::text) return;
            begin(event, Kind::typing);
        }
        extend(event);
        auto& moment = runs_.back().moment;
        ++moment.keyCount;
        moment.hasTab = moment.hasTab || key.use == Use::tab;
        moment.endsInEnter = key.use == Use::enter;
        runs_.back().texts += key.use == Use::text;
    }

    /// typing · ⌃⌫ · typing: one stretch.
    void leaveOutShortcutInTyping(ShownEvent const& event) {
        if (!follows(event, Kind::shortcut, shortcutInTyping) || runs_.size() < 2) return;
        auto const& before = runs_[runs_.size() - 2].moment;
        if (before.kind != Kind::typing || runs_.back().moment.start - before.end > shortcutInTyping) return;
        double const end = runs_.back().moment.end;
        runs_.pop_back();
        runs_.back().moment.end = std::max(runs_.back().moment.end, end);
    }

    void take(ShownEvent const& event, ShownEvent::Shortcut const& shortcut) {
        if (follows(event, Kind::shortcut, repeatedShortcut) && runs_.back().moment.keys == shortcut.keys)
            return extend(event);
        begin(event, Kind::shortcut).keys = shortcut.keys;
    }

    void take(ShownEvent const& event, ShownEvent::Switch const& change) {
        double start = event.start;
        std::optional<UnitPoint2> position;
        if (follows(event, Kind::click, causeOfSwitch) || follows(event, Kind::shortcut, causeOfSwitch)) {
            start = runs_.back().moment.start;
            position = runs_.back().moment.position;
            runs_.pop_back();
        }
        auto& moment = begin(event, Kind::appSwitch);
        moment.start = start;
        moment.position = position;
        moment.isReturn = change.isReturn;
    }

    std::vector<Run> runs_;
};

/// Whether something else is shown in it, in a film of that mode.
bool isHost(std::string_view name, DemoMode mode) {
    static constexpr std::array<std::string_view, 16> browsers{
        "firefox",         "firefox-esr",   "firefox web browser",
        "mozilla firefox", "chromium",      "chromium web browser",
        "chrome",          "google chrome", "safari",
        "microsoft edge",  "brave",         "brave web browser",
        "opera",           "vivaldi",       "epiphany",
        "falkon"};
    static constexpr std::array<std::string_view, 16> terminals{
        "terminal", "xterm",   "uxterm", "gnome terminal", "gnome-terminal", "xfce terminal", "konsole",    "console",
        "kitty",    "wezterm", "foot",   "alacritty",      "iterm2",         "tilix",         "terminator", "ghostty"};
    static constexpr std::array<std::string_view, 4> phones{"simulator", "android emulator", "iphone mirroring",
                                                            "scrcpy"};
    auto const isIn = [bare = bareText(name)](auto const& names) {
        return std::ranges::find(names, bare) != names.end();
    };
    switch (mode) {
    case DemoMode::website:
    case DemoMode::dashboard: return isIn(browsers);
    case DemoMode::terminal: return isIn(terminals);
    case DemoMode::mobileApp: return isIn(phones);
    default: return false;
    }
}

}

std::vector<ScriptMoment> scriptMoments(DemoProject const& project) {
    Merging merging;
    for (auto const& event : shownEvents(project)) merging.add(event);
    return merging.finish();
}

std::optional<std::string> demonstratedApp(DemoProject const& project) {
    std::map<std::string, double> weights;
    for (auto const& app : shownApps(project)) weights[app.name] += app.range.duration;
    if (weights.empty())
        for (auto const& event : shownEvents(project)) weights[event.app] += 1;
    std::erase_if(weights,
                  [&](auto const& weight) { return weight.first.empty() || isHost(weight.first, project.mode); });
    auto const most = std::ranges::max_element(weights, {}, [](auto const& weight) { return weight.second; });
    return most == weights.end() ? std::nullopt : std::optional(most->first);
}

std::string spokenName(std::string_view text) {
    constexpr std::size_t longest = 60;
    std::string name;
    for (auto const word : writtenWords(text)) {
        if (name.size() > text.size() || lengthOf(name) > longest) return "";
        if (!name.empty()) name += ' ';
        name += word;
    }
    std::erase_if(name, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; });
    return lengthOf(name) <= longest ? name : "";
}

}
