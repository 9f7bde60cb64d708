#include <Tavaro/Commands/TerminalPrompt.h>

#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <poll.h>
#include <string_view>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace tavaro::commands {

namespace {

using Clock = std::chrono::steady_clock;

/// For as long as it lives, the thread gets an error from a terminal in whose background it is; else the whole program
/// would be stopped.
class WithoutStops {
public:
    WithoutStops() {
        sigset_t stops;
        sigemptyset(&stops);
        sigaddset(&stops, SIGTTIN);
        sigaddset(&stops, SIGTTOU);
        ::pthread_sigmask(SIG_BLOCK, &stops, &before_);
    }
    ~WithoutStops() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    WithoutStops(WithoutStops const&) = delete;
    WithoutStops& operator=(WithoutStops const&) = delete;

private:
    sigset_t before_{};
};

/// One question at the terminal.
class Conversation {
public:
    struct Bells {
        Bell const& end;       // of the program
        Bell const& withdrawn; // of this question
    };

    Conversation(Bells bells, TerminalPrompt::LastLine& last, Clock::time_point deadline)
        : bells_(bells)
        , last_(last)
        , deadline_(deadline)
        , terminal_(::open("/dev/tty", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}

    std::optional<bool> ask(TerminalPrompt::Question const& question) {
        if (!isInForeground()) return std::nullopt;
        ::tcflush(terminal_.get(), TCIFLUSH); // else what was typed for something else would answer
        show(fmt::format("\n{}.\n{}\n", terminal::harmless(question.title),
                         terminal::harmless(terminal::Lines{question.text})));
        while (true) {
            showQuestion();
            auto const line = nextLine();
            endQuestion();
            if (!line) show(isWithdrawn_ ? "\nDecided otherwise.\n" : "\nNot answered; it is refused for now.\n");
            if (!line) return std::nullopt;
            if (auto const meant = meaning(*line)) return meant;
        }
    }

private:
    bool isInForeground() const { return terminal_.get() >= 0 && ::tcgetpgrp(terminal_.get()) == ::getpgrp(); }

    void showQuestion() {
        std::lock_guard const lock(last_.mutex);
        show("Allow it? [y/N] ");
        last_.isQuestion = true;
    }
    void endQuestion() {
        std::lock_guard const lock(last_.mutex);
        last_.isQuestion = false;
        last_.buried.hush();
    }

    /// A terminal that takes nothing, as one that is held with Ctrl-S, misses what is shown.
    void show(std::string_view text) const {
        while (!text.empty()) {
            auto const count = ::write(terminal_.get(), text.data(), text.size());
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return;
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    std::optional<std::string> nextLine() {
        while (true) {
            if (auto const line = lines_.next()) return std::string(*line);
            if (!waitForInput() || !read()) return std::nullopt;
        }
    }

    bool waitForInput() {
        while (true) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now()).count();
            pollfd waiting[] = {{terminal_.get(), POLLIN, 0},
                                {bells_.end.descriptor(), POLLIN, 0},
                                {bells_.withdrawn.descriptor(), POLLIN, 0},
                                {last_.buried.descriptor(), POLLIN, 0}};
            int const ready = ::poll(waiting, std::size(waiting), static_cast<int>(std::max<std::int64_t>(left, 0)));
            if (ready < 0 && errno == EINTR) continue;
            if (ready > 0 && waiting[3].revents != 0) {
                last_.buried.hush();
                showQuestion();
                continue;
            }
            isWithdrawn_ = ready > 0 && waiting[2].revents != 0;
            return ready > 0 && waiting[1].revents == 0 && !isWithdrawn_;
        }
    }

    /// False at the end of the terminal, or of its input, which Ctrl-D is.
    bool read() {
        std::array<char, 1024> piece;
        auto const count = ::read(terminal_.get(), piece.data(), piece.size());
        if (count < 0) return errno == EINTR || errno == EAGAIN;
        lines_.feed({piece.data(), static_cast<std::size_t>(count)});
        return count > 0;
    }

    static std::optional<bool> meaning(std::string_view line) {
        std::string word;
        for (unsigned char const c : line) {
            if (!std::isspace(c)) word += static_cast<char>(std::tolower(c));
        }
        if (word == "y" || word == "yes") return true;
        if (word.empty() || word == "n" || word == "no") return false;
        return std::nullopt;
    }

    static constexpr std::size_t longestLine = 4096; // as long as a terminal gives one

    Bells const bells_;
    TerminalPrompt::LastLine& last_;
    Clock::time_point const deadline_;
    bool isWithdrawn_ = false;
    FileDescriptor terminal_;
    LineSplitter lines_{longestLine};
};

}

TerminalPrompt::TerminalPrompt(MainQueue& queue, std::chrono::milliseconds patience)
    : queue_(queue)
    , patience_(patience) {}

TerminalPrompt::~TerminalPrompt() {
    isEnding_ = true;
    end_.ring();
}

TerminalPrompt::Withdraw TerminalPrompt::ask(Question question, Answer answer) {
    struct Withdrawal {
        Bell bell;
        std::atomic<bool> isMade = false;
    };
    auto const withdrawal = std::make_shared<Withdrawal>();
    if (!questions_) questions_.emplace("com.tavaro.prompt");
    questions_->async([this, withdrawal, question = std::move(question), answer = std::move(answer)]() mutable {
        if (isEnding_ || withdrawal->isMade) return;
        WithoutStops const withoutStops;
        auto const said = Conversation({end_, withdrawal->bell}, last_, Clock::now() + patience_).ask(question);
        if (!isEnding_ && !withdrawal->isMade) queue_.async([answer = std::move(answer), said] { answer(said); });
    });
    return [withdrawal] {
        withdrawal->isMade = true;
        withdrawal->bell.ring();
    };
}

void TerminalPrompt::interleave(FunctionRef<void(std::string_view before)> write) {
    std::lock_guard const lock(last_.mutex);
    bool const buries = std::exchange(last_.isQuestion, false);
    write(buries ? "\n" : "");
    if (buries) last_.buried.ring();
}

}
