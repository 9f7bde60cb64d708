#include <Tavaro/Commands/Command.h>

#include <Tavaro/Agents/UIArguments.h>
#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Terminal.h>

#include <TavaroAutomation/Driving/UIAutomation.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Protocol/MCPToolError.h>
#include <TavaroPlatform/Queues/MainQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <memory>
#include <optional>
#include <stop_token>

namespace tavaro::commands {

namespace {

/// Options that become the arguments of an agent's tool, so that people and agents get the same checks.
class ToolOptions {
public:
    explicit ToolOptions(CLI::App& command) : command_(command) {}

    void text(std::string const& name, std::string const& help) { add<std::string>("--" + name, name, help); }
    void required(std::string const& name, std::string const& help) { add<std::string>(name, name, help)->required(); }
    void number(std::string const& flag, std::string const& name, std::string const& help) {
        add<double>("--" + flag, name, help);
    }
    void number(std::string const& name, std::string const& help) { number(name, name, help); }

    JSONValue::Object arguments;

private:
    template<class Value>
    CLI::Option* add(std::string const& option, std::string const& name, std::string const& help) {
        return command_.add_option_function<Value>(
            option, [this, name](Value const& value) { arguments[name] = JSONValue(value); }, help);
    }

    CLI::App& command_;
};

/// The request that the arguments make. What they cannot make is wrong usage.
template<class Read> auto request(Read read, ToolOptions const& options) {
    try {
        return read(options.arguments);
    } catch (MCPToolError const& error) {
        throw CLI::ValidationError(error.what());
    }
}

/// Works on a thread of its own, so that Ctrl-C stops it in the middle and nothing stays pressed.
template<class Work> auto interruptibly(Work work) {
    using Result = std::invoke_result_t<Work, UIAutomation&, std::stop_token const&>;
    MainQueue queue;
    constexpr std::chrono::seconds letsGoWithin{3};
    Interruption const interruption({.grace = letsGoWithin});
    std::stop_source stop;
    std::optional<Result> result;
    std::exception_ptr failure;
    bool isOver = false;
    SerialQueue thread("com.tavaro.automation");
    thread.async([&] {
        try {
            UIAutomation automation;
            result = work(automation, stop.get_token());
        } catch (...) {
            failure = std::current_exception();
        }
        queue.async([&] { isOver = true; });
    });
    queue.runUntil([&] {
        if (interruption.isRequested()) stop.request_stop();
        return isOver;
    });
    if (failure) std::rethrow_exception(failure);
    return std::move(*result);
}

std::string place(UIRect const& frame) {
    return fmt::format("{:g}×{:g} at {:g},{:g}", frame.width, frame.height, frame.x, frame.y);
}

void addOpen(CLI::App& ui) {
    auto* command = ui.add_subcommand("open", "Opens an application and brings it to the front");
    auto options = std::make_shared<ToolOptions>(*command);
    auto asJSON = std::make_shared<bool>(false);
    options->required("app", "its name as menus show it, or its desktop id");
    command->add_flag("--json", *asJSON, "print where it is as JSON");
    command->callback([options, asJSON] {
        auto const app = request(uiArguments::app, *options);
        auto const info =
            interruptibly([&](auto& automation, auto const& stop) { return automation.openApp(app, stop); });
        if (*asJSON) return terminal::sayJSON(encodeJSON(info));
        terminal::say("{}: {}, {}\n", info.name, info.title, place(info.frame));
    });
}

void print(UIElementListing const& listing) {
    for (auto const& element : listing.elements) {
        terminal::say("{}  {:<12} {:<22} {}{}{}\n", element.id, element.role, place(element.frame), element.title,
                      element.isEnabled ? "" : " (disabled)", element.isVisible ? "" : " (out of view)");
    }
    if (listing.elements.size() < listing.count) {
        terminal::tell("These are {} of {} elements: --query and --limit show others.\n", listing.elements.size(),
                       listing.count);
    }
    if (!listing.isComplete) terminal::tell("The application did not tell of everything.\n");
}

void addElements(CLI::App& ui) {
    auto* command = ui.add_subcommand("elements", "Lists what can be clicked in an application's windows");
    auto options = std::make_shared<ToolOptions>(*command);
    auto asJSON = std::make_shared<bool>(false);
    options->required("app", "its name as menus show it, or its desktop id");
    options->text("query", "only those whose title contains this");
    options->number("limit", "at most this many; 150 where it is not given");
    command->add_flag("--json", *asJSON, "print them as JSON");
    command->callback([options, asJSON] {
        auto const wanted = request(uiArguments::elements, *options);
        auto const listing =
            interruptibly([&](auto& automation, auto const& stop) { return automation.elements(wanted, stop); });
        if (*asJSON) return terminal::sayJSON(encodeJSON(listing));
        print(listing);
    });
}

void addTarget(ToolOptions& options) {
    options.text("app", "the application that --title and --element are in");
    options.text("title", "the visible title of the element");
    options.text("element", "the id of the element, as `tavaro ui elements` prints it");
    options.number("x", "the point on the screen");
    options.number("y", "the point on the screen");
    options.number("glide", "seconds that the pointer takes to get there");
    options.number("hold", "seconds to wait afterwards");
}

void addClick(CLI::App& ui) {
    auto* command = ui.add_subcommand("click", "Clicks with the real pointer, which glides there first");
    auto options = std::make_shared<ToolOptions>(*command);
    addTarget(*options);
    options->text("role", "only an element of this role: Button, Row");
    options->text("button", "left or right");
    options->number("count", "2 for a double-click");
    command->callback([options] {
        auto const wanted = request(uiArguments::click, *options);
        auto const report =
            interruptibly([&](auto& automation, auto const& stop) { return automation.click(wanted, stop); });
        auto const title = report.element ? report.element->role + " “" + excerpt(report.element->title) + "” at " : "";
        terminal::say("Clicked {}{:g},{:g}.\n", title, report.point.x, report.point.y);
    });
}

void addScroll(CLI::App& ui) {
    auto* command =
        ui.add_subcommand("scroll", "Scrolls with the real wheel: over an element, a point, or the pointer");
    auto options = std::make_shared<ToolOptions>(*command);
    addTarget(*options);
    options->number("down", "pixels; negative ones scroll up");
    options->number("right", "pixels; negative ones scroll left");
    command->callback([options] {
        auto const wanted = request(uiArguments::scroll, *options);
        auto const report =
            interruptibly([&](auto& automation, auto const& stop) { return automation.scroll(wanted, stop); });
        terminal::say("Scrolled {:g} down, {:g} right{}{}.\n", report.wentDown, report.wentRight,
                      report.isSeen ? "" : ", reckoned by the wheel", report.isAtEnd ? ", as far as it goes" : "");
    });
}

void addKeys(CLI::App& ui) {
    auto* command = ui.add_subcommand("keys", "Types text or presses shortcuts in the window in front");
    auto options = std::make_shared<ToolOptions>(*command);
    options->text("text", "what to type, before the shortcuts");
    options->number("hold", "seconds to wait afterwards");
    command->add_option_function<std::vector<std::string>>(
        "keys",
        [options](std::vector<std::string> const& keys) {
            JSONValue::Array all;
            for (auto const& key : keys) all.emplace_back(key);
            options->arguments["keys"] = std::move(all);
        },
        "shortcuts in their order: cmd+s, shift+tab, return");
    command->callback([options] {
        auto const wanted = request(uiArguments::keys, *options);
        interruptibly([&](auto& automation, auto const& stop) { return automation.keys(wanted, stop), true; });
    });
}

void addScreenshot(CLI::App& ui) {
    auto* command =
        ui.add_subcommand("screenshot", "Writes a picture of an application's front window or the main display");
    auto options = std::make_shared<ToolOptions>(*command);
    auto output = std::make_shared<std::string>();
    auto ifTaken = std::make_shared<PendingFile::IfTaken>(PendingFile::IfTaken::refuse);
    options->text("app", "its front window");
    options->number("max-width", "max_width", "pixels of the longest edge; 1280 where it is not given");
    command->add_option("-o,--output", *output, "the PNG")->required()->check(notEmpty);
    addOverwriting(*command, *ifTaken);
    command->callback([options, output, ifTaken] {
        auto const wanted = request(uiArguments::screenshot, *options);
        expectWritable(*output, *ifTaken);
        auto const picture =
            interruptibly([&](auto& automation, auto const& stop) { return automation.screenshot(wanted, stop); });
        PendingFile file(*output);
        file.append(picture.png);
        file.commit(*ifTaken);
        terminal::tell("{}\n", picture.caption);
        terminal::sayPath(*output);
    });
}

}

void addUI(CLI::App& app) {
    auto* ui = app.add_subcommand("ui", "Looks at other applications and works them as a person would");
    ui->require_subcommand(1);
    for (auto* const add : {addOpen, addElements, addClick, addScroll, addKeys, addScreenshot}) add(*ui);
}

}
