#include <TavaroCapture/Secrets/Private/TerminalPrompts.h>

#include "../TemporaryFolder.h"
#include "../TestDisplay.h"

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
#include <vector>

namespace tavaro {

namespace {

/// A terminal of this process, in which a program runs.
class TestTerminal {
public:
    /// A program that waits, or `command`.
    explicit TestTerminal(std::vector<char const*> command = {})
        : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        command.push_back(nullptr);
        winsize const size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
        ioctl(master_, TIOCSWINSZ, &size);
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
            if (command.front()) {
                for (int const standard : {0, 1, 2}) dup2(line, standard);
                setenv("TERM", "xterm", 1);
                execvp(command.front(), const_cast<char* const*>(command.data()));
                _exit(127);
            }
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
    termios settings() const {
        termios settings{};
        tcgetattr(master_, &settings);
        return settings;
    }
    void set(termios const& settings) const { tcsetattr(master_, TCSANOW, &settings); }
    /// Without echo, but for these.
    void set(tcflag_t flags) const {
        auto changed = settings();
        changed.c_lflag = (changed.c_lflag & ~static_cast<tcflag_t>(ECHO | ICANON)) | flags;
        set(changed);
    }
    /// As full-screen programs have it.
    void setForScreen() const {
        auto changed = settings();
        changed.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
        changed.c_iflag &= ~static_cast<tcflag_t>(ICRNL);
        changed.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
        set(changed);
    }
    bool isEchoing() const { return (settings().c_lflag & ECHO) != 0; }
    void type(std::string const& keys) const { EXPECT_EQ(write(master_, keys.data(), keys.size()), std::ssize(keys)); }
    /// What it prints would fill the terminal, else, and stop it.
    void readAway() const {
        char text[4096];
        fcntl(master_, F_SETFL, O_NONBLOCK);
        while (read(master_, text, sizeof text) > 0) {
        }
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
    terminal.setForScreen();
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
    run("2", other.shown("systemd-ask-pas"));
    EXPECT_TRUE(asks()) << "as all do that read key by key between lines";
    auto raw = other.settings();
    cfmakeraw(&raw);
    other.set(raw);
    EXPECT_FALSE(asks()) << "or one unknown full-screen program anywhere would be the end of the log";
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

namespace {

struct RealProgram {
    char const* what;
    std::vector<char const*> command;
    std::string keys = {}; // typed first
};

bool isInstalled(std::string const& program) {
    return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;
}

/// Once the program has its terminal as it wants it.
bool comesToAsk(RealProgram const& program, bool asks) {
    TestTerminal const terminal(program.command);
    auto const isQuiet = [&] {
        terminal.readAway();
        return !terminal.isEchoing();
    };
    EXPECT_TRUE(eventually(isQuiet)) << program.what;
    terminal.type(program.keys);
    TerminalPrompts prompts;
    return eventually([&] { return isQuiet() && prompts.asksForSecret(getpid()) == asks; });
}

}

TEST(TerminalPrompts, realPromptsThatReadKeyByKeyAreKnownAndWhatShowsItsKeysItselfIsToo) {
    std::vector<RealProgram> const prompts{
        {"a script's PIN", {"bash", "-c", "read -s -n 6 -p 'PIN: ' pin"}},
        {"a shell's own", {"bash", "--norc", "-i"}, "read -s -n 6 pin; true\r"},
        {"a program that shows stars", {"systemd-ask-password", "Password:"}},
        {"one in Python", {"python3", "-c", "import sys, tty; tty.setraw(0); sys.stdin.read(1)"}},
        {"one in JavaScript", {"node", "-e", "process.stdin.setRawMode(true); process.stdin.on('data', () => {})"}},
        {"a dialog's box", {"dialog", "--passwordbox", "Password", "9", "30"}},
    };
    auto const socket = "tavaro-test-" + std::to_string(getpid());
    std::vector<RealProgram> const others{
        {"a shell", {"bash", "--norc", "-i"}},
        {"a shell", {"zsh", "-f", "-i"}},
        {"a shell", {"fish", "--no-config"}},
        {"an editor", {"vim", "-u", "NONE", "-N"}},
        {"an editor", {"nano"}},
        {"a pager", {"less", "/etc/services"}},
        {"a monitor", {"top"}},
        {"a monitor", {"htop"}},
        {"terminals in a terminal", {"tmux", "-L", socket.c_str(), "-f", "/dev/null", "new", "exec sleep 60"}},
        {"an interpreter", {"python3"}},
        {"an interpreter", {"node"}},
        {"a dialog's open box", {"dialog", "--inputbox", "Name", "9", "30"}},
    };
    for (auto const& program : prompts)
        if (isInstalled(program.command.front())) EXPECT_TRUE(comesToAsk(program, true)) << program.what;
    for (auto const& program : others)
        if (isInstalled(program.command.front()))
            EXPECT_TRUE(comesToAsk(program, false)) << program.what << ": " << program.command.front();
    if (isInstalled("tmux")) EXPECT_NE(std::system(("tmux -L " + socket + " kill-server 2>/dev/null").c_str()), -1);
}

}
