#include <Tavaro/Commands/SecretEntry.h>

#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Errors/Error.h>

#include <cerrno>
#include <optional>
#include <termios.h>
#include <unistd.h>

namespace tavaro::commands {

namespace {

constexpr char interrupt = 3, endOfInput = 4, backspace = 8, eraseLine = 21, rubOut = 127;

/// A terminal that shows nothing and gives each key by itself, Ctrl-C too, so that it is always put back.
class Unseen {
public:
    Unseen() {
        if (::tcgetattr(STDIN_FILENO, &before_) != 0) return;
        isTerminal_ = true;
        auto unseen = before_;
        unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &unseen);
    }
    ~Unseen() {
        if (!isTerminal_) return;
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        terminal::tell("\n");
    }
    Unseen(Unseen const&) = delete;
    Unseen& operator=(Unseen const&) = delete;

    bool isTerminal() const { return isTerminal_; }

private:
    termios before_{};
    bool isTerminal_ = false;
};

/// None at the end.
std::optional<char> nextByte() {
    char c = 0;
    ssize_t count = -1;
    do count = ::read(STDIN_FILENO, &c, 1);
    while (count < 0 && errno == EINTR);
    return count == 1 ? std::optional(c) : std::nullopt;
}

/// True where the line is at its end.
bool take(char c, Secret& secret, bool isTyped) {
    if (c == '\n' || c == '\r' || (isTyped && c == endOfInput)) return true;
    if (isTyped && c == interrupt) throw Error("Nothing was entered.");
    if (isTyped && (c == backspace || c == rubOut))
        secret.removeLast();
    else if (isTyped && c == eraseLine)
        secret.clear();
    else if (!(secret.isEmpty() && (c == ' ' || c == '\t')) && !secret.append(c))
        throw Error("That is no ElevenLabs API key: it is too short or too long.");
    return false;
}

}

Secret readSecret(char const* prompt) {
    Secret secret;
    Unseen const unseen;
    if (unseen.isTerminal()) terminal::tell("{}", prompt);
    while (auto const c = nextByte())
        if (take(*c, secret, unseen.isTerminal())) break;
    while (!secret.isEmpty() && (secret.text().back() == ' ' || secret.text().back() == '\t')) secret.removeLast();
    return secret;
}

}
