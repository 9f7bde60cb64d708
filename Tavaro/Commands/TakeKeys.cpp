#include <Tavaro/Commands/TakeKeys.h>

#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace tavaro::commands {

namespace {

termios before{};

/// Whoever reads a terminal in its background is stopped.
bool isInForeground() { return isatty(STDIN_FILENO) == 1 && tcgetpgrp(STDIN_FILENO) == getpgrp(); }

}

TakeKeys::TakeKeys() {
    if (!isInForeground() || isatty(STDERR_FILENO) != 1 || tcgetattr(STDIN_FILENO, &before) != 0) return;
    auto single = before;
    single.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    areThere_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &single) == 0;
}

TakeKeys::~TakeKeys() {
    if (areThere_ && isInForeground()) tcsetattr(STDIN_FILENO, TCSANOW, &before);
}

std::optional<char> TakeKeys::next() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    char key = 0;
    bool const isPressed = areThere_ && isInForeground() && poll(&input, 1, 0) == 1 && (input.revents & POLLIN) != 0;
    if (!isPressed) return std::nullopt;
    if (read(STDIN_FILENO, &key, 1) == 1) return key;
    areThere_ = false; // the terminal has gone
    return std::nullopt;
}

}
