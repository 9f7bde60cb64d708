#pragma once

#include "../../Capture/TestBus.h"

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace tavaro {

/// A widget that a test makes up.
struct FakeWidget {
    atspi::Role role = atspi::Role::panel;
    std::string name;
    atspi::Extents extents{0, 0, 100, 100};
    std::vector<atspi::State> states{atspi::State::showing, atspi::State::visible, atspi::State::sensitive};
    std::string description;
    std::vector<int> children; // places in the program's list
    int childCount = -1;       // what it says; as many as it has where negative
    bool endsProgram = false;  // when it is asked for its name
    bool isSilent = false;     // answers nothing
    std::vector<int> labels;   // it is labelled by
};

/// A program on the bus that answers for its widgets, the first of which is the program itself.
class FakeProgram {
public:
    FakeProgram(TestBus const& bus, std::string toolkit, std::deque<FakeWidget> widgets);
    ~FakeProgram();
    FakeProgram(FakeProgram const&) = delete;
    FakeProgram& operator=(FakeProgram const&) = delete;

    atspi::Address root() const;
    /// How often somebody asked for a widget's children, or for what it has at a point.
    int askedForChildren(int widget) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
