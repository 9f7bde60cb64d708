#include <TavaroCapture/Secrets/Private/TerminalPrompts.h>

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace tavaro {

namespace {

/// A terminal of this process, in which a program runs.
class TestTerminal {
public:
    TestTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        grantpt(master_);
        unlockpt(master_);
        int ends[2];
        if (pipe(ends) != 0) abort();
        std::string const name = ptsname(master_);
        process_ = fork();
        if (process_ == 0) {
            setsid();
            int const line = open(name.c_str(), O_RDWR);
            ioctl(line, TIOCSCTTY, 0);
            if (write(ends[1], "", 1) != 1) _exit(1);
            while (true) pause();
        }
        char ready = 0;
        if (read(ends[0], &ready, 1) != 1) abort();
        close(ends[0]), close(ends[1]);
    }
    ~TestTerminal() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        close(master_);
    }

    void set(tcflag_t flags) {
        termios settings{};
        tcgetattr(master_, &settings);
        settings.c_lflag = (settings.c_lflag & ~static_cast<tcflag_t>(ECHO | ICANON)) | flags;
        tcsetattr(master_, TCSANOW, &settings);
    }

private:
    int master_;
    pid_t process_ = 0;
};

}

TEST(TerminalPrompts, aLineThatShowsNothingIsASecretsAndAFullScreenProgramsIsNot) {
    TestTerminal terminal, other;
    TerminalPrompts prompts;
    EXPECT_FALSE(prompts.asksForSecret(getpid())) << "a shell that waits for a command";
    terminal.set(ICANON);
    EXPECT_TRUE(prompts.asksForSecret(getpid()));
    terminal.set(0);
    EXPECT_FALSE(prompts.asksForSecret(getpid())) << "an editor draws what is typed by itself";
    other.set(ICANON);
    EXPECT_TRUE(prompts.asksForSecret(getpid())) << "any of its terminals may be in front";
    other.set(ICANON | ECHO);
    EXPECT_FALSE(prompts.asksForSecret(getpid()));
    EXPECT_FALSE(prompts.asksForSecret(0));
}

}
