#include <TavaroVoice/Script/Private/ScriptSentences.h>

#include <TavaroCore/Voice/VoiceoverPlan.h>

#include <array>
#include <fmt/format.h>
#include <utility>

namespace tavaro::sentences {

namespace {

using Style = AutoDirectorScript::Style;

/// A product without a name.
std::string_view standIn(DemoMode mode) {
    switch (mode) {
    case DemoMode::website: return "this site";
    case DemoMode::terminal: return "this tool";
    default: return "this app";
    }
}

std::string capitalized(std::string_view text) {
    std::string result(text);
    if (!result.empty() && result[0] >= 'a' && result[0] <= 'z') result[0] = static_cast<char>(result[0] - 'a' + 'A');
    return result;
}

std::string demoOpening(DemoMode mode, std::optional<std::string> const& product) {
    auto const name = product.value_or(std::string(standIn(mode)));
    switch (mode) {
    case DemoMode::website: return fmt::format("Here's a quick walkthrough of {}.", name);
    case DemoMode::desktopApp:
    case DemoMode::plain: return fmt::format("Let me show you {}.", name);
    case DemoMode::mobileApp: return fmt::format("Let's take a look at {} on the phone.", name);
    case DemoMode::dashboard:
        return product ? fmt::format("This is the {} dashboard.", name) : "This is the dashboard.";
    case DemoMode::terminal: return fmt::format("Let me show you how {} works from the terminal.", name);
    }
    return "";
}

std::string demoClosing(DemoMode mode) {
    if (mode == DemoMode::website) return "That's it — give it a try yourself.";
    if (mode == DemoMode::terminal) return "And that's the whole flow, end to end.";
    return "And that's all there is to it.";
}

std::string_view firstWord(std::string_view line) { return line.substr(0, line.find_first_of(" ,")); }

/// The line of that number, or the next that does not begin as the one before it does.
std::string inTurn(std::size_t number, std::span<std::string const> lines, std::string_view lineBefore) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        auto const& line = lines[(number + i) % lines.size()];
        if (firstWord(line) != firstWord(lineBefore)) return line;
    }
    return lines[number % lines.size()];
}

constexpr std::pair<std::string_view, std::string_view> keyNames[] = {
    {"⌃", "Control"},       {"⌥", "Alt"},
    {"⇧", "Shift"},         {"⌘", "Super"},
    {"↩", "Return"},        {"⇥", "Tab"},
    {"⌫", "Backspace"},     {"⌦", "Delete"},
    {"esc", "Escape"},      {"←", "Left Arrow"},
    {"→", "Right Arrow"},   {"↑", "Up Arrow"},
    {"↓", "Down Arrow"},    {",", "Comma"},
    {".", "Period"},        {"/", "Slash"},
    {"\\", "Backslash"},    {"-", "Minus"},
    {"+", "Plus"},          {"=", "Equals"},
    {";", "Semicolon"},     {":", "Colon"},
    {"'", "Apostrophe"},    {"`", "Backtick"},
    {"[", "Left Bracket"},  {"]", "Right Bracket"},
    {"{", "Left Brace"},    {"}", "Right Brace"},
    {"<", "Less Than"},     {">", "Greater Than"},
    {"#", "Hash"},          {"*", "Asterisk"},
    {"?", "Question Mark"}, {"!", "Exclamation Mark"},
    {"_", "Underscore"},    {"~", "Tilde"},
};

std::string keyName(std::string const& key) {
    for (auto const& [written, said] : keyNames)
        if (key == written) return std::string(said);
    return capitalized(key);
}

}

std::string region(UnitPoint2 const& position) {
    std::string const across = position.x < 0.33 ? "left" : position.x > 0.66 ? "right" : "centre";
    std::string const down = position.y < 0.33 ? "top" : position.y > 0.66 ? "bottom" : "middle";
    if (down != "middle") return across == "centre" ? down : down + " " + across;
    return across == "centre" ? across : across + " side";
}

std::string opening(Style style, DemoMode mode, std::optional<std::string> const& product) {
    auto const name = product.value_or(std::string(standIn(mode)));
    auto const first = product ? name : capitalized(name);
    switch (style) {
    case Style::demo: return demoOpening(mode, product);
    case Style::launch: return fmt::format("{} is live today. Here's what it does.", first);
    case Style::tutorial: return fmt::format("In this walkthrough you'll learn how to use {}, step by step.", name);
    case Style::pitch: return fmt::format("{} takes a job that used to take minutes and makes it instant.", first);
    case Style::social: return "You're doing this the slow way. Watch.";
    }
    return "";
}

std::string closing(Style style, DemoMode mode, std::optional<std::string> const& product) {
    switch (style) {
    case Style::demo: return demoClosing(mode);
    case Style::launch:
        return fmt::format("{} is available now — the link is below.", product.value_or(capitalized(standIn(mode))));
    case Style::tutorial: return "That's the whole process. Try it on your own file next.";
    case Style::pitch: return "That's the entire flow, start to finish, in one pass.";
    case Style::social: return "That's it. That's the whole thing.";
    }
    return "";
}

std::string_view walkThrough() { return "Here's how it works. I'll walk you through it in just a few seconds."; }

std::string click(std::size_t number, UnitPoint2 const& position) {
    auto const place = region(position);
    switch (number % 8) {
    case 0: return fmt::format("Here I'm opening the {} of the window.", place);
    case 1: return fmt::format("Now I select what I need from the {}.", place);
    case 2: return fmt::format("Next, I go to the {}.", place);
    case 3: return "From here, I pick the option I want.";
    case 4: return fmt::format("Then I head over to the {}.", place);
    case 5: return "This opens the next step.";
    case 6: return "I click through to the next view.";
    default: return fmt::format("Over in the {}, I choose what's next.", place);
    }
}

std::string typing(std::size_t number) {
    static constexpr std::array lines{"I type in what I'm looking for.", "Now I fill in the details.",
                                      "I enter the value here."};
    return lines[number % lines.size()];
}

std::string drag(std::size_t number) {
    return number % 2 == 0 ? "I drag it into place." : "Then I move it where I want it.";
}

std::string shortcut(std::span<std::string const> keys) {
    return shortcutName(keys) + " does the same thing without leaving the keyboard.";
}

std::string nextShortcut(std::size_t number, std::span<std::string const> keys, bool isSame,
                         std::string_view lineBefore) {
    auto const name = shortcutName(keys);
    std::array const again{"I press " + name + " again.", "And " + name + " once more."};
    std::array const next{"Now it's " + name + ".", "Then I press " + name + ".", "Next comes " + name + "."};
    return isSame ? inTurn(number, again, lineBefore) : inTurn(number, next, lineBefore);
}

std::string appSwitch(std::size_t number, std::string const& app, bool isReturn, std::string_view lineBefore) {
    std::array const there{"Now I switch over to " + app + ".", "Then I bring up " + app + "."};
    std::array const back{"Then I go back to " + app + ".", "Now I'm back in " + app + "."};
    return isReturn ? inTurn(number, back, lineBefore) : inTurn(number, there, lineBefore);
}

std::string shortcutName(std::span<std::string const> keys) {
    std::string name;
    for (auto const& key : keys) {
        if (!name.empty()) name += ' ';
        name += keyName(key);
    }
    return name;
}

double spokenSeconds(std::string_view line) { return VoiceoverSegment{.id = {}, .text = std::string(line)}.duration(); }

}
