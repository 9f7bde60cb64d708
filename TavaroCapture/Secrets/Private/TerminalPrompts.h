#pragma once

#include <filesystem>
#include <vector>

namespace tavaro {

/// Tells whether a window's terminal asks for a secret. Its settings show that: it takes whole lines and shows nothing
/// of them. Of a program with several terminals nobody says which one is in front, so any of them counts. One thread.
class TerminalPrompts {
public:
    explicit TerminalPrompts(std::filesystem::path processes = "/proc") : processes_(std::move(processes)) {}

    /// Of the terminals in which programs run that this one started, also through others. Some 15 µs a process of the
    /// machine, four times a second at most.
    bool asksForSecret(int process);
    /// Of all terminals of this user; and whether one of the programs runs that do so only to ask for a secret, in
    /// windows of their own. Costs the same.
    bool anyoneAsks();

    struct Terminal {
        int number = 0;          // of /dev/pts
        bool isOfPrompt = false; // what runs in it shows stars for a secret, so it takes single keys
        bool operator==(Terminal const&) const = default;
    };

private:
    void lookForTerminals(int process);
    void lookEverywhere();
    void noteTerminal(int number, bool isOfPrompt);

    std::filesystem::path const processes_;
    std::vector<Terminal> terminals_; // of the process
    int process_ = 0;                 // below 0: everywhere
    bool isPromptOpen_ = false;       // in a window
    double lookedAt_ = 0;             // moment of the media clock
};

}
