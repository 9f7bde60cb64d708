#include <TavaroAutomation/Driving/UIAutomation.h>

#include <TavaroAutomation/Applications/Private/ApplicationStart.h>
#include <TavaroAutomation/Applications/Private/AutomatedDesktop.h>
#include <TavaroAutomation/Driving/Private/ApplicationElements.h>
#include <TavaroAutomation/Driving/Private/TargetSearch.h>
#include <TavaroAutomation/Elements/Private/UIMatch.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/FakeInput.h>
#include <TavaroAutomation/Input/Private/Pointer.h>
#include <TavaroAutomation/Input/Private/Typist.h>
#include <TavaroAutomation/Pictures/Private/UIScreenshot.h>
#include <TavaroCore/Errors/Excerpt.h>

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Time for people to see what came of it.
void hold(double seconds, std::stop_token const& stop) {
    auto const end = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    x11::restUntil(end, stop);
}

}

struct UIAutomation::State {
    explicit State(std::string const& name)
        : display(name)
        , connection(x11::automatedDesktop(name))
        , search(connection, name) {}

    Pointer& pointer() {
        if (!pointer_) pointer_ = std::make_unique<Pointer>(display);
        return *pointer_;
    }

    /// Where the pointer is, and on what where that was asked for.
    struct Reached {
        UIActionReport report;
        std::optional<FoundTarget> target;
    };
    Reached glideTo(UITarget const& target, Purpose purpose, double seconds, std::stop_token const& stop) {
        if (!target.isElement()) {
            if (target.point) pointer().glide(*target.point, seconds, stop);
            return {.report = {.point = pointer().position()}};
        }
        auto found = search.find(target, purpose, stop);
        pointer().glide(found.point(), seconds, stop, [&] { return search.placeOf(found, stop); });
        auto const point = pointer().position();
        search.expectWindowUnderPointer(found, stop);
        if (purpose == Purpose::click) search.expectNotCovered(found, point, stop);
        UIActionReport const report{.point = point, .element = found.placed.element};
        return {.report = report, .target = std::move(found)};
    }

    std::string display;
    x11::Connection connection;
    TargetSearch search;
    StartedPrograms programs;
    std::unique_ptr<Pointer> pointer_;
};

UIAutomation::UIAutomation(std::string const& display) : state_(std::make_unique<State>(display)) {}
UIAutomation::~UIAutomation() = default;

UIAppInfo UIAutomation::openApp(std::string const& app, std::stop_token const& stop) {
    return openApplication(state_->connection,
                           {.name = app, .display = state_->display, .programs = state_->programs, .stop = stop});
}

UIElementListing UIAutomation::elements(UIElementsRequest const& request, std::stop_token const& stop) {
    auto result = state_->search.list(request.app, stop);
    std::erase_if(result.elements,
                  [&](UIElement const& element) { return !UIMatch::contains(element.title, request.query); });
    // What cannot be seen is for scrolling to; it does not take the room of what can.
    std::stable_partition(result.elements.begin(), result.elements.end(),
                          [](UIElement const& element) { return element.isVisible; });
    result.count = result.elements.size();
    if (result.count > request.limit) result.elements.resize(request.limit);
    return result;
}

UIActionReport UIAutomation::click(UIClickRequest const& request, std::stop_token const& stop) {
    auto const report = state_->glideTo(request.target, Purpose::click, request.glide, stop).report;
    state_->pointer().click(request.button, request.count, stop);
    hold(request.hold, stop);
    return report;
}

UIActionReport UIAutomation::scroll(UIScrollRequest const& request, std::stop_token const& stop) {
    auto reached = state_->glideTo(request.target, Purpose::scroll, request.glide, stop);
    auto& report = reached.report;
    PlaceOfTarget place;
    if (reached.target) place = [&] { return state_->search.cornerOf(*reached.target, stop); };
    auto const scrolled = state_->pointer().scroll({.down = request.down, .right = request.right}, stop, place);
    report.wentDown = scrolled.went.down;
    report.wentRight = scrolled.went.right;
    report.isAtEnd = scrolled.isAtEnd;
    report.isSeen = scrolled.isSeen;
    hold(request.hold, stop);
    return report;
}

void UIAutomation::keys(UIKeysRequest const& request, std::stop_token const& stop) {
    std::vector<KeyCombo> combos;
    for (auto const& key : request.keys) combos.push_back(parseShortcut(key));
    Typist typist(state_->display);
    if (!request.text.empty()) typist.type(request.text, stop);
    for (auto const& combo : combos) typist.press(combo, stop);
    hold(request.hold, stop);
}

UIPicture UIAutomation::screenshot(UIScreenshotRequest const& request, std::stop_token const& stop) {
    ScreenshotRequest wanted{.longestSide = request.maxWidth, .display = state_->display};
    std::string name;
    if (!request.app.empty()) {
        auto const application = state_->search.application(request.app);
        if (application.front.isMinimized) {
            throw AutomationError(
                AutomationError::Kind::noWindow,
                fmt::format("The window of {} is minimised. Call ui_open_app to bring it back.", application.name));
        }
        wanted.window = application.front.window;
        name = fmt::format("{} — {}", application.name, excerpt(application.front.title));
    }
    expectNotStopped(stop);
    auto picture = takeScreenshot(wanted);
    return {.png = std::move(picture.png),
            .caption = picture.caption(name),
            .frame = picture.frame,
            .width = picture.width,
            .height = picture.height};
}

}
