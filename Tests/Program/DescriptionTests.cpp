#include "ProcessFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

std::string joined(Words const& words) {
    std::string text;
    for (auto const& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

/// What the program tells of itself: its manual and the completion of its commands.
class Description : public ProcessFixture {
protected:
    Outcome run(std::string const& program, Arguments const& arguments) { return start(program, arguments).wait(); }
    std::string const& helpOf(Arguments command) {
        auto& help = helps_[command];
        // What a command takes comes before those below it.
        bool const takesSome =
            command.size() > 1 && helpOf({command.front()}).find("Positionals:") != std::string::npos;
        if (takesSome) command.insert(command.begin() + 1, "tour.recproj");
        command.emplace_back("--help");
        if (help.empty()) help = tavaro(command).out;
        return help;
    }
    Words found(std::string const& text, char const* pattern) const {
        std::regex const expression(pattern, std::regex::ECMAScript | std::regex::multiline);
        Words words;
        for (std::sregex_iterator each(text.begin(), text.end(), expression), end; each != end; ++each)
            words.push_back((*each)[1]);
        return words;
    }
    Words commandsOf(std::string const& help) const {
        auto const list = help.find("\nSubcommands:\n");
        return list == std::string::npos ? Words() : found(help.substr(list), "^  ([a-z-]+)");
    }
    Words optionsOf(std::string const& help) const { return found(help, "^ *(?:-[a-zA-Z],)?(--[a-z-]+)"); }
    /// Each command and each one below it, as words.
    std::vector<Arguments> everyCommand() {
        std::vector<Arguments> all{{}};
        for (std::size_t i = 0; i < all.size(); ++i) {
            for (auto const& name : commandsOf(helpOf(all[i]))) {
                auto below = all[i];
                below.push_back(name);
                all.push_back(below);
            }
        }
        return all;
    }
    std::string scriptFor(std::string const& shell) {
        auto const outcome = tavaro({"completion", shell});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        write(shell, outcome.out);
        return path(shell);
    }
    static bool isInstalled(std::string const& program) {
        return fs::exists("/usr/bin/" + program) || fs::exists("/bin/" + program);
    }
    /// What was offered each time, which ends with "=="; without what it is told to mean.
    static std::vector<Words> answers(std::string const& text) {
        std::vector<Words> all(1);
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            if (line == "==")
                all.emplace_back();
            else if (!line.empty())
                all.back().push_back(line.substr(0, line.find('\t')));
        }
        all.pop_back();
        return all;
    }

    /// Of the completions that are asked for, of each command what is below it, where something is, and its options.
    void expectOffered(std::vector<Arguments> const& commands, std::vector<Words> const& given) {
        auto from = given.begin();
        for (auto const& command : commands) {
            auto const below = commandsOf(helpOf(command)), options = optionsOf(helpOf(command));
            if (!below.empty()) {
                ASSERT_NE(from, given.end());
                EXPECT_THAT(*from++, IsSupersetOf(below)) << joined(command);
            }
            ASSERT_NE(from, given.end());
            EXPECT_THAT(*from++, IsSupersetOf(options)) << joined(command);
        }
        EXPECT_EQ(from, given.end());
    }
    void bashOffersAll(std::vector<Arguments> const& commands);
    void fishOffersAll(std::vector<Arguments> const& commands);
    void zshReadsAll(std::vector<Arguments> const& commands);
    void manHasAll(std::vector<Arguments> const& commands);

private:
    std::map<Arguments, std::string> helps_;
};

/// A completion as bash asks for it: a line, the words typed before the cursor, and what was begun behind them.
std::string bashLine(Words const& typed, std::string const& begun) {
    std::string words = "COMP_WORDS=(tavaro";
    for (auto const& word : typed) words += " '" + word + "'";
    return words + " '" + begun + "'); COMP_CWORD=" + std::to_string(typed.size() + 1) +
           "; COMPREPLY=(); _tavaro; printf '%s\\n' \"${COMPREPLY[@]}\"; echo ==\n";
}

}

void Description::bashOffersAll(std::vector<Arguments> const& commands) {
    std::string asked = "source " + scriptFor("bash") + "\n";
    for (auto const& command : commands)
        asked += (commandsOf(helpOf(command)).empty() ? "" : bashLine(command, "")) + bashLine(command, "-");
    write("ask", asked);
    auto const outcome = run("/bin/bash", {path("ask")});
    EXPECT_EQ(outcome.error, "");
    expectOffered(commands, answers(outcome.out));
}

void Description::fishOffersAll(std::vector<Arguments> const& commands) {
    std::string asked = "source " + scriptFor("fish") + "\n";
    for (auto const& command : commands) {
        auto const line = joined({"tavaro", joined(command)}) + (command.empty() ? "" : " ");
        if (!commandsOf(helpOf(command)).empty()) asked += "complete -C '" + line + "'\necho ==\n";
        asked += "complete -C '" + line + "--'\necho ==\n";
    }
    if (!isInstalled("fish")) return;
    write("ask", asked);
    auto const outcome = run("/usr/bin/env", {"HOME=" + folder.string(), "fish", "--no-config", path("ask")});
    EXPECT_EQ(outcome.error, "");
    expectOffered(commands, answers(outcome.out));
}

void Description::zshReadsAll(std::vector<Arguments> const& commands) {
    auto const script = scriptFor("zsh");
    for (auto const& command : commands) {
        auto const place = joined(command.empty() ? Words{"tavaro"} : Words{"tavaro", joined(command)});
        EXPECT_THAT(read("zsh"), HasSubstr("'" + place + "')"));
    }
    if (!isInstalled("zsh")) return;
    auto const outcome = run(
        "/bin/zsh", {"-f", "-c", "autoload -U compinit; compinit -D; source " + script + "; print $_comps[tavaro]"});
    EXPECT_EQ(outcome.out, "_tavaro\n") << outcome.error;
}

void Description::manHasAll(std::vector<Arguments> const& commands) {
    ASSERT_EQ(tavaro({"manual", "-o", path("manual")}).exitCode, 0);
    std::set<std::string> pages;
    for (auto const& command : commands) {
        auto const page = "manual/tavaro" + (command.empty() ? "" : "-" + command.front()) + ".1";
        ASSERT_TRUE(fs::exists(path(page))) << page;
        pages.insert(path(page));
        auto const text = std::regex_replace(read(page), std::regex("\\\\-"), "-");
        for (auto const& option : optionsOf(helpOf(command))) EXPECT_THAT(text, HasSubstr(option)) << page;
    }
    EXPECT_EQ(pages.size(), names(path("manual")).size());
    if (!isInstalled("groff")) return;
    for (auto const& page : pages) {
        auto const outcome = run("/usr/bin/groff", {"-man", "-Kutf8", "-Tutf8", "-ww", "-z", page});
        EXPECT_THAT(outcome.error, IsEmpty()) << page;
    }
}

TEST_F(Description, eachCommandWithAllOfItsOptionsIsOfferedByTheShellsAndOnAManualPage) {
    auto const all = everyCommand();
    ASSERT_GT(all.size(), 30u);
    bashOffersAll(all);
    fishOffersAll(all);
    zshReadsAll(all);
    manHasAll(all);
}

TEST_F(Description, bashOffersChoicesOfAnOptionAndFilesElsewhere) {
    write("a tour.txt", "");
    write("ask", "cd " + folder.string() + "; source " + scriptFor("bash") + "\n" +
                     bashLine({"record", "--mode"}, "d") + bashLine({"record", "--mode", "="}, "ter") +
                     bashLine({"record", "--fps"}, "") + bashLine({"edit"}, "a t") +
                     bashLine({"edit", "a tour.txt"}, "tig") + bashLine({"record", "-o"}, "a t") +
                     bashLine({"completion"}, ""));
    EXPECT_THAT(answers(run("/bin/bash", {path("ask")}).out),
                ElementsAre(Words{"desktopApp", "dashboard"}, Words{"terminal"}, Words{}, Words{"a tour.txt"},
                            Words{"tighten-pauses"}, Words{"a tour.txt"}, Words{"bash", "zsh", "fish"}));
}
