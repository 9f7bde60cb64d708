#include <TavaroVoice/Script/Private/ShownEvents.h>

#include <TavaroVoice/Script/Private/ScriptMoments.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

// Many clips that each show all of a long log would make a list that no memory holds. No film of a day reaches it.
constexpr std::size_t mostEvents = 1'000'000;
constexpr double settledSeconds = 1; // an application that is in front for less only flashed up

bool isOfDesktop(std::string_view bundleID) {
    static constexpr std::array<std::string_view, 12> identities{
        "com.tavaro.app",
        "com.apple.SecurityAgent",
        "com.apple.loginwindow",
        "com.apple.UserNotificationCenter",
        "com.apple.systemuiserver",
        "com.apple.controlcenter",
        "com.apple.notificationcenterui",
        // The same on the desktops of Linux.
        "com.tavaro.Tavaro",
        "org.gnome.Shell",
        "org.kde.plasmashell",
        "xfce4-panel",
        "xfdesktop",
    };
    return std::ranges::find(identities, bundleID) != identities.end();
}

/// When the desktop or Tavaro itself is in front, in seconds of the recording.
class DesktopTimes {
public:
    explicit DesktopTimes(std::vector<AppFocusSpan> const& spans) {
        for (auto const& span : spans)
            if (isOfDesktop(span.bundleID)) ranges_.push_back({span.t, span.duration});
        std::ranges::sort(ranges_, {}, &TimeRange::start);
    }
    bool hold(double recorded) const {
        auto const after = std::ranges::upper_bound(ranges_, recorded, {}, &TimeRange::start);
        return after != ranges_.begin() && std::prev(after)->contains(recorded);
    }

private:
    std::vector<TimeRange> ranges_;
};

/// "•" is a text whose characters are not logged.
ShownEvent::Key::Use useOf(std::string_view key) {
    using Use = ShownEvent::Key::Use;
    static constexpr std::array<std::string_view, 6> others{"⌫", "⌦", "←", "→", "↑", "↓"};
    if (key == "⇥") return Use::tab;
    if (key == "↩") return Use::enter;
    bool const isText = key == "Space" || (lengthOf(key) == 1 && std::ranges::find(others, key) == others.end());
    return isText ? Use::text : Use::other;
}

/// Collects what the film shows of a log.
class Collecting {
public:
    explicit Collecting(DemoProject const& project)
        : project_(project)
        , shown_(recordingOnTimeline(project))
        , crop_(project.effectiveCrop())
        , ofDesktop_(project.metadata->appSpans) {}

    std::vector<ShownEvent> collect() {
        auto const apps = shownApps(project_);
        addClicks();
        addKeys();
        addSwitches(apps);
        std::ranges::stable_sort(events_, {}, &ShownEvent::start);
        nameApps(apps);
        return std::move(events_);
    }

private:
    void add(ShownEvent event) {
        bool const isInFilm = event.start >= 0 && event.start <= project_.duration();
        if (isInFilm && std::isfinite(event.end) && events_.size() < mostEvents) events_.push_back(std::move(event));
    }

    void addClicks() {
        shown_.forEachShown(project_.metadata->clicks, [&](ClickEvent const& click, double at) {
            if (!crop_.contains(click.position) || ofDesktop_.hold(click.t)) return;
            UnitPoint2 const position{(click.position.x - crop_.x) / crop_.width,
                                      (click.position.y - crop_.y) / crop_.height};
            add({.start = at,
                 .end = click.isDrag ? endOf(click, at) : at,
                 .app = spokenName(click.application.value_or("")),
                 .what = ShownEvent::Click{position, click.isDrag}});
        });
    }

    /// The next time at which the end of a drag is shown.
    double endOf(ClickEvent const& drag, double at) const {
        for (double const end : shown_.outputTimes(drag.dragEnd.value_or(drag.t)))
            if (end >= at) return end;
        return at;
    }

    void addKeys() {
        shown_.forEachShown(project_.metadata->keystrokes, [&](KeystrokeEvent const& key, double at) {
            if (ofDesktop_.hold(key.t) || key.keys.empty()) return;
            auto app = spokenName(key.application.value_or(""));
            if (key.isShortcut)
                add({at, at, std::move(app), ShownEvent::Shortcut{key.keys}});
            else
                add({at, at, std::move(app), ShownEvent::Key{useOf(key.keys.back())}});
        });
    }

    void addSwitches(std::vector<ShownApp> const& apps) {
        std::set<std::string_view> seen;
        for (std::size_t i = 0; i < apps.size(); ++i) {
            auto const& app = apps[i];
            bool const isReturn = !seen.insert(app.name).second;
            if (i == 0) continue;
            add({app.range.start, app.range.start, app.name, ShownEvent::Switch{isReturn}});
        }
    }

    void nameApps(std::vector<ShownApp> const& apps) {
        std::size_t behind = 0; // the applications before have come to the front
        for (auto& event : events_) {
            while (behind < apps.size() && apps[behind].range.start <= event.start) ++behind;
            if (event.app.empty() && behind > 0) event.app = apps[behind - 1].name;
        }
    }

    DemoProject const& project_;
    RecordingOnTimeline const shown_;
    NormalizedRect const crop_;
    DesktopTimes const ofDesktop_;
    std::vector<ShownEvent> events_;
};

}

std::vector<ShownApp> shownApps(DemoProject const& project) {
    auto const recording = recordingOnTimeline(project);
    std::vector<ShownApp> shown;
    for (auto const& span : project.metadata->appSpans) {
        auto const name = isOfDesktop(span.bundleID) ? "" : spokenName(span.name);
        if (name.empty() || shown.size() >= mostEvents) continue;
        for (auto const& stretch : recording.stretches({span.t, span.duration}))
            if (stretch.range.duration >= settledSeconds) shown.push_back({stretch.range, name});
    }
    std::ranges::stable_sort(shown, {}, [](ShownApp const& app) { return app.range.start; });
    std::vector<ShownApp> result;
    for (auto& app : shown) {
        if (!result.empty() && result.back().name == app.name)
            result.back().range = result.back().range.unionWith(app.range);
        else
            result.push_back(std::move(app));
    }
    return result;
}

std::vector<ShownEvent> shownEvents(DemoProject const& project) { return Collecting(project).collect(); }

}
