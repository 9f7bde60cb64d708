#include <Tavaro/Agents/Private/UITools.h>

#include <Tavaro/Agents/Private/RecordObject.h>
#include <Tavaro/Agents/UIArguments.h>

#include <TavaroAutomation/Driving/UIAutomation.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

namespace {

std::string place(UIRect const& frame) {
    return fmt::format("x {:g}, y {:g}, {:g} × {:g} points", frame.x, frame.y, frame.width, frame.height);
}

std::string target(UIActionReport const& report) {
    auto const at = fmt::format("{:g}, {:g}", report.point.x, report.point.y);
    if (!report.element) return at;
    auto const& element = *report.element;
    return fmt::format("{} “{}” at {}", element.role, excerpt(element.title), at);
}

JSONValue::Object structured(UIActionReport const& report) {
    JSONValue::Object result{{"x", report.point.x}, {"y", report.point.y}};
    if (report.element) result["element"] = objectOf(*report.element);
    return result;
}

std::string summary(UIElementListing const& listing, std::string const& app) {
    bool const isLimited = listing.elements.size() < listing.count;
    auto const part = isLimited ? fmt::format("{} of ", listing.elements.size()) : "";
    return fmt::format("{}{} elements in {}{}.{}", part, listing.count, excerpt(app),
                       isLimited ? "; give query or limit for the others" : "",
                       listing.isComplete ? "" : " It did not tell of everything: this is a part.");
}

std::string went(UIActionReport const& report) {
    auto text = fmt::format("{:g} pixels down", report.wentDown);
    if (report.wentRight != 0) text += fmt::format(" and {:g} right", report.wentRight);
    if (!report.isSeen) text += ", reckoned by the wheel: what moved could not be followed";
    return report.isAtEnd ? text + "; there is no more in that direction" : text;
}

}

UITools::UITools(MainQueue& queue, std::string display)
    : display_(std::move(display))
    , side_(queue, "com.tavaro.automation") {}

UITools::~UITools() { stop_.request_stop(); }

void UITools::perform(RunningCall& call, Work work) {
    auto const stop = std::make_shared<std::stop_source>();
    call.whenAbandoned([stop] { stop->request_stop(); });
    side_.ask([this, stop, work = std::move(work)] { return worked(work, *stop); },
              call.later([](RunningCall& here, Outcome<ToolResult> const& result) { here.finish(result.value()); }));
}

ToolResult UITools::worked(Work const& work, std::stop_source& stop) {
    std::stop_callback const whenAllStop(stop_.get_token(), [&] { stop.request_stop(); });
    try {
        expectNotStopped(stop.get_token()); // it may have waited long for its turn
        if (!automation_) automation_ = std::make_unique<UIAutomation>(display_);
        return work(*automation_, stop.get_token());
    } catch (AutomationError const& error) {
        // The display may be another one, or the same again, by the next call.
        if (error.kind == AutomationError::Kind::failed || error.kind == AutomationError::Kind::noDisplay)
            automation_.reset();
        throw;
    }
}

void UITools::openApp(RunningCall& call) {
    perform(call, [app = uiArguments::app(call.arguments().all())](UIAutomation& automation, auto const& stop) {
        auto const info = automation.openApp(app, stop);
        return toolResult::ok(
            fmt::format("{} is in front: “{}”, {}.", info.name, excerpt(info.title), place(info.frame)),
            objectOf(info));
    });
}

void UITools::elements(RunningCall& call) {
    perform(
        call, [request = uiArguments::elements(call.arguments().all())](UIAutomation& automation, auto const& stop) {
            auto const listing = automation.elements(request, stop);
            JSONValue::Array elements;
            for (auto const& element : listing.elements) elements.push_back(objectOf(element));
            return toolResult::ok(summary(listing, request.app), JSONValue::Object{{"elements", std::move(elements)},
                                                                                   {"count", listing.count},
                                                                                   {"complete", listing.isComplete}});
        });
}

void UITools::click(RunningCall& call) {
    perform(call, [request = uiArguments::click(call.arguments().all())](UIAutomation& automation, auto const& stop) {
        auto const report = automation.click(request, stop);
        return toolResult::ok(fmt::format("Clicked {}.", target(report)), structured(report));
    });
}

void UITools::scroll(RunningCall& call) {
    perform(call, [request = uiArguments::scroll(call.arguments().all())](UIAutomation& automation, auto const& stop) {
        auto const report = automation.scroll(request, stop);
        auto result = structured(report);
        result["down"] = report.wentDown;
        result["right"] = report.wentRight;
        result["at_end"] = report.isAtEnd;
        return toolResult::ok(fmt::format("Scrolled over {}: {}.", target(report), went(report)), std::move(result));
    });
}

void UITools::keys(RunningCall& call) {
    perform(call, [request = uiArguments::keys(call.arguments().all())](UIAutomation& automation, auto const& stop) {
        automation.keys(request, stop);
        // What was typed is the client's own; it is not repeated.
        return toolResult::ok("Typed.");
    });
}

void UITools::screenshot(RunningCall& call) {
    perform(call,
            [request = uiArguments::screenshot(call.arguments().all())](UIAutomation& automation, auto const& stop) {
                auto picture = automation.screenshot(request, stop);
                return toolResult::image(Data{{picture.png.begin(), picture.png.end()}}, picture.caption);
            });
}

}
