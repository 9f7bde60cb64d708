#pragma once

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroPlatform/Queues/MainQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro::commands {

/// Asks the person at the terminal that the program was started from for a yes or a no, one question at a time, in the
/// order in which they came. Nothing waits for the person but a thread of its own, started with the first question.
///
///     TerminalPrompt prompt(queue);
///     MCPConsent::Ask const ask = [&](ConsentPrompt const& about, TerminalPrompt::Answer answer) {
///         return prompt.ask({about.title, about.text}, std::move(answer));
///     };
///
/// It belongs to the main queue. What was typed before a question was shown is no answer to it. Ctrl-C stays a signal.
class TerminalPrompt {
public:
    struct Question {
        std::string title; // what is asked, without a question mark
        std::string text;  // what a yes means
    };
    /// Called on the main queue: true for yes; false for no, which an empty line is too; none where nobody says
    /// anything: there is no terminal, the program runs in its background, it is closed or at its end, or `patience` is
    /// over.
    using Answer = std::function<void(std::optional<bool>)>;
    /// Takes a question back: it is not shown any more, and never answered. Any thread, also after the answer.
    using Withdraw = std::function<void()>;

    static constexpr std::chrono::minutes usualPatience{2};

    explicit TerminalPrompt(MainQueue& queue, std::chrono::milliseconds patience = usualPatience);
    /// Withdraws what is asked; it is never answered.
    ~TerminalPrompt();
    TerminalPrompt(TerminalPrompt const&) = delete;
    TerminalPrompt& operator=(TerminalPrompt const&) = delete;

    Withdraw ask(Question question, Answer answer);
    /// Any thread. For what others write on the terminal: `write` gets what belongs before it, a line break where a
    /// question is shown, which is then shown again.
    void interleave(FunctionRef<void(std::string_view before)> write);

    /// The end of what the terminal shows.
    struct LastLine {
        std::mutex mutex; // who holds it may write
        bool isQuestion = false;
        Bell const buried; // rings once the question is no more the last line
    };

private:
    MainQueue& queue_;
    std::chrono::milliseconds const patience_; // for one question
    std::atomic<bool> isEnding_ = false;
    Bell const end_;
    LastLine last_;
    std::optional<SerialQueue> questions_; // ends before what it uses
};

}
