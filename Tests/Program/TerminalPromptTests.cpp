#include "TestTerminal.h"

#include <Tavaro/Commands/TerminalPrompt.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace tavaro;
using namespace std::chrono_literals;
using commands::TerminalPrompt;

namespace {

std::string textOf(std::optional<bool> said) { return !said ? "none" : *said ? "yes" : "no"; }

/// Asks for each name in a process of its own and shows what was said once all is answered: "<yes no none>".
void askFor(std::vector<std::string> const& names, std::chrono::milliseconds patience) {
    MainQueue queue;
    TerminalPrompt prompt(queue, patience);
    std::vector<std::string> said;
    for (auto const& name : names) {
        prompt.ask({.title = name + " wants in", .text = "It may do much."},
                   [&](std::optional<bool> answer) { said.push_back(textOf(answer)); });
    }
    queue.runUntil([&] { return said.size() == names.size(); });
    auto const shown = fmt::format("<{}>", fmt::join(said, " "));
    if (::write(STDOUT_FILENO, shown.data(), shown.size()) < 0) _exit(3);
}

constexpr auto question = "Allow it? [y/N] ";

}

TEST(TerminalPrompt, questionsAreAskedOneAtATimeInTheirOrderAndOnlyAYesIsAYes) {
    TestTerminal terminal([] { askFor({"A", "B", "C", "D"}, 1min); });
    EXPECT_EQ(terminal.shownUntil(question), "\r\nA wants in.\r\nIt may do much.\r\nAllow it? [y/N] ");
    terminal.type("perhaps\n");
    EXPECT_EQ(terminal.shownUntil(question), "perhaps\r\nAllow it? [y/N] ")
        << "the next question waits for this answer";
    terminal.type(" Yes \n");
    EXPECT_EQ(terminal.shownUntil(question), " Yes \r\n\r\nB wants in.\r\nIt may do much.\r\nAllow it? [y/N] ");
    terminal.type("n\n");
    terminal.shownUntil(question);
    terminal.type("\n");
    terminal.shownUntil(question);
    terminal.type("\x04"); // Ctrl-D
    EXPECT_THAT(terminal.shownUntil(">"), testing::EndsWith("refused for now.\r\n<yes no no none>"));
}

TEST(TerminalPrompt, whatWasTypedBeforeAQuestionIsNoAnswerToIt) {
    TestTerminal terminal([] {
        auto const begun = std::chrono::steady_clock::now();
        int const input = STDIN_FILENO;
        pollfd waiting{input, POLLIN, 0};
        while (::poll(&waiting, 1, 100) == 0 && std::chrono::steady_clock::now() - begun < 10s) {
        }
        askFor({"A", "B"}, 1min);
    });
    terminal.type("y\ny\n");
    terminal.shownUntil(question);
    terminal.type("n\n");
    terminal.shownUntil(question);
    terminal.type("n\n");
    EXPECT_THAT(terminal.shownUntil(">"), testing::EndsWith("<no no>"));
}

TEST(TerminalPrompt, aQuestionThatIsTakenBackMakesRoomForTheNext) {
    TestTerminal terminal([] {
        static volatile std::sig_atomic_t isDecided = 0;
        std::signal(SIGQUIT, [](int) { isDecided = 1; });
        MainQueue queue;
        TerminalPrompt prompt(queue, 1min);
        std::string said;
        auto const ask = [&](std::string const& name) {
            return prompt.ask({name, ""}, [&, name](std::optional<bool> answer) { said += name + textOf(answer); });
        };
        auto const withdrawA = ask("A"), withdrawB = ask("B");
        ask("C");
        queue.runUntil([] { return isDecided != 0; });
        withdrawB();
        withdrawA();
        queue.runUntil([&] { return !said.empty(); });
        withdrawA();
        _exit(said == "Cyes" ? 0 : 2);
    });
    terminal.shownUntil(question);
    terminal.type("\x1c"); // Ctrl-\, while A's question is shown
    EXPECT_THAT(terminal.shownUntil(question),
                testing::EndsWith("Decided otherwise.\r\n\r\nC.\r\n\r\nAllow it? [y/N] "));
    terminal.type("y\n");
    EXPECT_EQ(terminal.exitCode(), 0);
}

TEST(TerminalPrompt, aLineOfSomebodyElseComesBetweenAndTheQuestionAgain) {
    TestTerminal terminal([] {
        static volatile std::sig_atomic_t isTime = 0;
        std::signal(SIGQUIT, [](int) { isTime = 1; });
        MainQueue queue;
        TerminalPrompt prompt(queue, 1min);
        std::string said;
        auto const tell = [&](std::string const& text) {
            prompt.interleave([&](std::string_view before) {
                auto const shown = fmt::format("{}{}\n", before, text);
                if (::write(STDOUT_FILENO, shown.data(), shown.size()) < 0) _exit(3);
            });
        };
        tell("first");
        prompt.ask({"A", ""}, [&](std::optional<bool> answer) { said = textOf(answer); });
        queue.runUntil([] { return isTime != 0; });
        tell("second");
        queue.runUntil([&] { return !said.empty(); });
        tell(said + ">");
    });
    EXPECT_THAT(terminal.shownUntil(question), testing::StartsWith("first\r\n"));
    terminal.type("\x1c"); // Ctrl-\, once the question is shown
    EXPECT_THAT(terminal.shownUntil(question), testing::EndsWith("\r\nsecond\r\nAllow it? [y/N] "));
    terminal.type("y\n");
    EXPECT_EQ(terminal.shownUntil(">"), "y\r\nyes>");
}

TEST(TerminalPrompt, nothingThatIsShownSteersTheTerminal) {
    TestTerminal terminal([] { askFor({"\x1b[2J\rgood\n"}, 1min); });
    EXPECT_THAT(terminal.shownUntil(question), testing::HasSubstr("\r\n�[2J�good� wants in.\r\n"));
}

TEST(TerminalPrompt, whoSaysNothingInTimeHasNotAnswered) {
    TestTerminal terminal([] { askFor({"A", "B"}, 50ms); });
    EXPECT_THAT(terminal.shownUntil(">"), testing::EndsWith("<none none>"));
}

TEST(TerminalPrompt, aTerminalThatIsClosedAnswersNothingAndNobodyWaitsForIt) {
    TestTerminal terminal([] {
        std::signal(SIGHUP, SIG_IGN);
        MainQueue queue;
        TerminalPrompt prompt(queue, 1min);
        std::vector<std::optional<bool>> answers;
        for (int i = 0; i < 2; ++i) prompt.ask({"A", ""}, [&](auto answer) { answers.push_back(answer); });
        queue.runUntil([&] { return answers.size() == 2; });
        _exit(answers[0] || answers[1] ? 2 : 0);
    });
    terminal.shownUntil(question);
    terminal.close();
    EXPECT_EQ(terminal.exitCode(), 0);
}

TEST(TerminalPrompt, withoutATerminalOrInItsBackgroundNobodyIsAsked) {
    TestTerminal terminal([] {
        pid_t const inBackground = ::fork();
        if (inBackground == 0) {
            ::setpgid(0, 0);
            askFor({"A"}, 1min);
            _exit(0);
        }
        ::waitpid(inBackground, nullptr, 0);
        pid_t const withoutTerminal = ::fork();
        if (withoutTerminal == 0) {
            ::setsid();
            askFor({"B"}, 1min);
            _exit(0);
        }
        ::waitpid(withoutTerminal, nullptr, 0);
    });
    EXPECT_EQ(terminal.shownUntil(">"), "<none>");
    EXPECT_EQ(terminal.shownUntil(">"), "<none>");
}

TEST(TerminalPrompt, aQuestionThatIsOpenHoldsNeitherASignalNorTheEnd) {
    TestTerminal terminal([] {
        std::signal(SIGINT, [](int) { _exit(7); });
        {
            MainQueue queue;
            TerminalPrompt prompt(queue, 1min);
            prompt.ask({"A", ""}, [](auto) { _exit(2); });
            auto const until = std::chrono::steady_clock::now() + 200ms;
            queue.runUntil([&] { return std::chrono::steady_clock::now() > until; });
        }
        askFor({"B"}, 1min);
    });
    EXPECT_THAT(terminal.shownUntil("B wants in."), testing::HasSubstr("A.\r\n")) << "A's question was withdrawn";
    terminal.shownUntil(question);
    terminal.type("\x03"); // Ctrl-C
    EXPECT_EQ(terminal.exitCode(), 7);
}
