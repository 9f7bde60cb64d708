#pragma once

#include "../TestBus.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tavaro {

/// A program with a window of fields that tells of them on a bus, as toolkits do.
class FakeForm {
public:
    struct Field {
        bool isPassword = false; // by its role
        std::string text;
    };

    /// By that name its program calls itself.
    FakeForm(TestBus const& bus, std::vector<Field> fields, std::string const& name = "form");
    ~FakeForm();
    FakeForm(FakeForm const&) = delete;
    FakeForm& operator=(FakeForm const&) = delete;

    /// What happens in the program, each once it gets round to it.
    void focus(int field);
    void activate(bool isActive);
    /// The window is gone, and nobody is told that it is not in front any more.
    void close();
    /// No field has the keyboard any more, and nobody is told.
    void leave();
    void fill(int field, std::string const& text);

    /// Does nothing and answers nobody until it goes on: first with what happened, then with the questions.
    void stall();
    void goOn();

private:
    struct State;
    void soon(std::function<void(State&)> step);
    std::unique_ptr<State> state_;
};

}
