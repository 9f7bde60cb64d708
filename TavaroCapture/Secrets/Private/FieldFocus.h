#pragma once

#include <TavaroCapture/Accessibility/BusConnection.h>

#include <functional>
#include <memory>
#include <string>

namespace tavaro {

/// Knows from what programs say of their widgets whether the keyboard is in a password field. One thread.
class FieldFocus {
public:
    explicit FieldFocus(atspi::Bus bus);
    ~FieldFocus();
    FieldFocus(FieldFocus const&) = delete;
    FieldFocus& operator=(FieldFocus const&) = delete;

    /// What to wait for by `poll`, and how many milliseconds at most; below 0: for ever.
    int descriptor() const;
    short awaited() const;
    int patience() const;
    /// Takes in what programs have said since; false once the bus has gone away: nothing is known any more.
    bool listen();

    /// Until it is known where the keyboard was when this began; a second at most.
    bool isSearching() const;
    /// Whether a password field has the keyboard, or had it, or may have had it, since the last call.
    bool takeSecret();

    /// What is in the field that has the keyboard.
    enum class Content {
        open,    // or there is none that tells
        hidden,  // one and the same sign for each character
        unknown, // its program does not answer
    };
    /// Answers by `listen`, when the program has said which field got the keyboard by what it had been given to do, or
    /// at once where no program tells.
    void ask(std::function<void(Content)> answered);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
