#include <Tavaro/Commands/TerminalPrompt.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
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
    std::string said;
    std::size_t count = 0;
    for (auto const& name : names) {
        prompt.ask({.title = name + " wants in", .text = "It may do much."},
                   [&](std::optional<bool> answer) { said += (count++ == 0 ? "" : " ") + textOf(answer); });
    }
    queue.runUntil([&] { return count == names.size(); });
    auto const shown = fmt::format("<{}>", said);
    if (::write(STDOUT_FILENO, shown.data(), shown.size()) < 0) _exit(3);
}

class TerminalPromptTest : public testing::Test {
protected:
    ~TerminalPromptTest() override {
        if (terminal_ >= 0) ::close(terminal_);
        if (process_ == 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }

    /// A process at a terminal of its own.
    template<class Work> void start(Work const& work) {
        process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        ASSERT_GE(process_, 0);
        if (process_ > 0) return;
        work();
        _exit(0);
    }
    void type(std::string const& text) const {
        ASSERT_EQ(::write(terminal_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// Reads what the terminal shows until it ends so, for ten seconds at most. All that was shown since the last call.
    std::string shownUntil(std::string const& end) {
        std::string shown;
        while (!shown.ends_with(end)) {
            pollfd waiting{terminal_, POLLIN, 0};
            if (::poll(&waiting, 1, 10'000) <= 0) return shown + " … and no more";
            char piece = 0; // one at a time, so that nothing is read past the end
            if (::read(terminal_, &piece, 1) <= 0) return shown + " … and its end";
            shown += piece;
        }
        return shown;
    }
    void closeTerminal() {
        ::close(terminal_);
        terminal_ = -1;
    }
    int exitStatus() {
        int status = 0;
        ::waitpid(std::exchange(process_, 0), &status, 0);
        return status;
    }

    static constexpr auto question = "Allow it? [y/N] ";

private:
    pid_t process_ = 0;
    int terminal_ = -1;
};

}

TEST_F(TerminalPromptTest, questionsAreAskedOneAtATimeInTheirOrderAndOnlyAYesIsAYes) {
    start([] { askFor({"A", "B", "C", "D"}, 1min); });
    EXPECT_EQ(shownUntil(question), "\r\nA wants in.\r\nIt may do much.\r\nAllow it? [y/N] ");
    type("perhaps\n");
    EXPECT_EQ(shownUntil(question), "perhaps\r\nAllow it? [y/N] ") << "the next question waits for this answer";
    type(" Yes \n");
    EXPECT_EQ(shownUntil(question), " Yes \r\n\r\nB wants in.\r\nIt may do much.\r\nAllow it? [y/N] ");
    type("n\n");
    shownUntil(question);
    type("\n");
    shownUntil(question);
    type("\x04"); // Ctrl-D
    EXPECT_THAT(shownUntil(">"), testing::EndsWith("refused for now.\r\n<yes no no none>"));
}

TEST_F(TerminalPromptTest, whatWasTypedBeforeAQuestionIsNoAnswerToIt) {
    start([] {
        auto const begun = std::chrono::steady_clock::now();
        int const input = STDIN_FILENO;
        pollfd waiting{input, POLLIN, 0};
        while (::poll(&waiting, 1, 100) == 0 && std::chrono::steady_clock::now() - begun < 10s) {
        }
        askFor({"A", "B"}, 1min);
    });
    type("y\ny\n");
    shownUntil(question);
    type("n\n");
    shownUntil(question);
    type("n\n");
    EXPECT_THAT(shownUntil(">"), testing::EndsWith("<no no>"));
}

TEST_F(TerminalPromptTest, nothingThatIsShownSteersTheTerminal) {
    start([] { askFor({"\x1b[2J\rgood\n"}, 1min); });
    EXPECT_THAT(shownUntil(question), testing::HasSubstr("\r\n�[2J�good� wants in.\r\n"));
}

TEST_F(TerminalPromptTest, whoSaysNothingInTimeHasNotAnswered) {
    start([] { askFor({"A", "B"}, 50ms); });
    EXPECT_THAT(shownUntil(">"), testing::EndsWith("<none none>"));
}

TEST_F(TerminalPromptTest, aTerminalThatIsClosedAnswersNothingAndNobodyWaitsForIt) {
    start([] {
        std::signal(SIGHUP, SIG_IGN);
        MainQueue queue;
        TerminalPrompt prompt(queue, 1min);
        std::vector<std::optional<bool>> answers;
        for (int i = 0; i < 2; ++i) prompt.ask({"A", ""}, [&](auto answer) { answers.push_back(answer); });
        queue.runUntil([&] { return answers.size() == 2; });
        _exit(answers[0] || answers[1] ? 2 : 0);
    });
    shownUntil(question);
    closeTerminal();
    EXPECT_EQ(exitStatus(), 0);
}

TEST_F(TerminalPromptTest, withoutATerminalOrInItsBackgroundNobodyIsAsked) {
    start([] {
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
    EXPECT_EQ(shownUntil(">"), "<none>");
    EXPECT_EQ(shownUntil(">"), "<none>");
}

TEST_F(TerminalPromptTest, aQuestionThatIsOpenHoldsNeitherASignalNorTheEnd) {
    start([] {
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
    EXPECT_THAT(shownUntil("B wants in."), testing::HasSubstr("A.\r\n")) << "A's question was withdrawn";
    shownUntil(question);
    type("\x03"); // Ctrl-C
    EXPECT_EQ(WEXITSTATUS(exitStatus()), 7);
}
