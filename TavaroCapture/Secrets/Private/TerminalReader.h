#pragma once

#include <TavaroCapture/Secrets/Private/TerminalProcesses.h>

#include <vector>

struct termios;

/// What becomes of the keys that are typed into a terminal, by what can be known of it from outside: its settings, and
/// which program reads them. What is on its screen cannot be known.
namespace tavaro {

/// What is known of the program that reads a terminal.
enum class TerminalReader {
    unknown,
    drawing, // it shows what is typed by itself, as a pager or a connection to another machine does
    prompt,  // it runs to ask for a secret, and shows stars
};

/// Of a program in front of its terminal.
TerminalReader readerOf(TerminalProcess const& process, std::vector<TerminalProcess> const& all);

enum class Typing {
    shown,   // by the terminal, a line editor, or a program that draws the whole screen
    secret,  // taken as lines, or one by one from between printed lines, and not shown by the terminal
    unclear, // an unknown program takes all keys as they are: one that draws its screen so, or that shows stars
};
Typing typingInto(termios const& settings, TerminalReader reader);

}
