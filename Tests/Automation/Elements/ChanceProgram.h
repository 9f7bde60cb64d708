#pragma once

#include <TavaroAutomation/Elements/Private/Accessible.h>

#include "AnsweringConnection.h"

#include <atomic>
#include <memory>

namespace tavaro {

/// A program that answers by chance: what could be true, values of another type, failures, objects that are gone or
/// hold each other, trees without an end, nothing at all.
class ChanceProgram {
public:
    explicit ChanceProgram(TestBus const& bus);
    ~ChanceProgram();
    ChanceProgram(ChanceProgram const&) = delete;
    ChanceProgram& operator=(ChanceProgram const&) = delete;

    /// What it answers from now on, and how much of it.
    void begin(unsigned seed);
    atspi::Address root() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
