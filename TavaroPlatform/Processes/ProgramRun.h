#pragma once

#include <chrono>
#include <cstddef>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

/// A program that is given a text and answers with one.
struct ProgramRun {
    std::vector<std::string> command; // the first word is the program's file
    std::string input;                // its whole standard input
    std::chrono::milliseconds patience{60'000};
    std::size_t mostOutput = 64 << 20; // bytes of its standard output
    std::vector<std::string> more;     // variables beside this program's, "NAME=value"
};

struct ProgramAnswer {
    enum class End { exited, broken, outOfTime, cancelled, tooMuch, notStarted };
    End end = End::exited; // `broken` by a signal
    int exitCode = 0;
    std::string out;
    std::string error; // the end of what it says on standard error

    bool isGood() const { return end == End::exited && exitCode == 0; }
};

/// Runs it to its end. It has no terminal; when it has to end early, all that it started is killed with it.
ProgramAnswer runProgram(ProgramRun const& run, std::stop_token const& stop = {});

}
