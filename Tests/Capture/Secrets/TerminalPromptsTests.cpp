#include <TavaroCapture/Secrets/Private/TerminalPrompts.h>

#include "../TemporaryFolder.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
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

    /// As /proc shows a program that runs there.
    std::string shown(std::string const& name) const {
        int number = 0;
        ioctl(master_, TIOCGPTN, &number);
        int const device = 136 << 8 | number; // of one of the first 256
        return "1 (" + name + ") S 0 1 1 " + std::to_string(device) + " 1 0";
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

TEST(TerminalPrompts, whereNobodySaysWhatIsInFrontAnyPromptMayBe) {
    TemporaryFolder const processes;
    auto const run = [&](std::string const& process, std::string const& shown) {
        std::filesystem::create_directories(processes.path() / process);
        std::ofstream(processes.path() / process / "stat") << shown;
    };
    auto const asks = [&] { return TerminalPrompts(processes.path()).anyoneAsks(); };
    TestTerminal terminal, other;
    run("1", terminal.shown("bash"));
    run("2", other.shown("ssh"));
    EXPECT_FALSE(asks());
    other.set(ICANON);
    EXPECT_TRUE(asks());
    other.set(0);
    EXPECT_FALSE(asks());
    run("2", other.shown("sudo"));
    EXPECT_TRUE(asks()) << "it shows stars";
    run("2", other.shown("bash"));
    for (auto const* const prompt : {"pinentry-gnome3", "swaylock", "ksshaskpass", "gcr-prompter"}) {
        run("3", std::string("3 (") + prompt + ") S 1 3 3 0 -1 0");
        EXPECT_TRUE(asks()) << prompt;
    }
    for (auto const* const waiting : {"polkitd", "gnome-keyring-d", "zenity", "firefox"}) {
        run("3", std::string("3 (") + waiting + ") S 1 3 3 0 -1 0");
        EXPECT_FALSE(asks()) << waiting;
    }
}

}
