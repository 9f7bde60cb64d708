#pragma once

#include <TavaroCapture/Secrets/Private/TerminalReader.h>

#include <filesystem>
#include <vector>

namespace tavaro {

/// Tells whether a window's terminal asks for a secret, as far as its settings and the programs in it show that. Of a
/// program with several terminals nobody says which one is in front, so any of them counts. One thread.
class TerminalPrompts {
public:
    explicit TerminalPrompts(std::filesystem::path processes = "/proc") : processes_(std::move(processes)) {}

    /// Of the terminals in which programs run that this one started, also through others, and of those inside of tmux
    /// where one of them shows it. A program that may be asking counts as one that does. Some 15 µs a process of the
    /// machine, four times a second at most.
    bool asksForSecret(int process);
    /// Of all terminals of this user; and whether one of the programs runs that do so only to ask for a secret, in
    /// windows of their own. What only may be asking does not count, or hardly a key would. Costs the same.
    bool anyoneAsks();

    struct Terminal {
        enum class Place { window, anywhere };

        int number = 0;              // of /dev/pts
        Place place = Place::window; // whether the window in front shows it, or somebody's may
        TerminalReader reader = TerminalReader::unknown;
    };

private:
    void lookForTerminals(int process);
    void lookInside(std::vector<TerminalProcess> const& all);
    void lookEverywhere();
    bool isDue(int process);
    void noteTerminal(TerminalProcess const& process, Terminal::Place place, std::vector<TerminalProcess> const& all);

    std::filesystem::path const processes_;
    std::vector<Terminal> terminals_; // of the process
    int process_ = 0;                 // below 0: everywhere
    bool isPinentryOpen_ = false;     // somewhere: a window for terminals belongs to a program that none started
    bool isPromptOpen_ = false;       // in a window
    double lookedAt_ = 0;             // moment of the media clock
};

}
