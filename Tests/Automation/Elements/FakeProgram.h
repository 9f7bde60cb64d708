#pragma once

#include "../../Capture/TestBus.h"

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include <deque>
#include <memory>
#include <set>
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
    std::vector<int> children;  // places in the program's list
    int childCount = -1;        // what it says; as many as it has where negative
    bool endsProgram = false;   // when it is asked for its name
    bool isSilent = false;      // answers nothing
    std::vector<int> labels;    // it is labelled by
    bool talksNonsense = false; // answers with values of any type but the right one, or with none
    int guesses = 0;            // as the program itself: how often it answers with what lies lowest at a point
    bool saysAllAtOnce = false; // as the program itself
    bool findsNoPoint = false;  // has nothing at any point
    bool isMadeAnew = false;    // has another object each time that it is found by a point
};

/// A program on the bus that answers for its widgets, the first of which is the program itself.
class FakeProgram {
public:
    /// By a point GTK 4 finds the innermost widget, the others the next one inwards. Of two at one place, the last is
    /// on top.
    FakeProgram(TestBus const& bus, std::string toolkit, std::deque<FakeWidget> widgets);
    ~FakeProgram();
    FakeProgram(FakeProgram const&) = delete;
    FakeProgram& operator=(FakeProgram const&) = delete;

    atspi::Address root() const { return widget(0); }
    atspi::Address widget(int place) const;
    /// Whether nothing answers any more.
    void hang(bool isHanging);
    /// How often a widget was asked that: "GetChildren", "GetAccessibleAtPoint".
    int asked(int widget, std::string const& question) const;
    /// Of which interfaces: "Accessible", "Text".
    std::set<std::string> interfacesAsked(int widget) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
