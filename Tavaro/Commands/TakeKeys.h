#pragma once

#include <optional>

namespace tavaro::commands {

/// Single keys of the terminal that the command was started from, as orders to a take. For as long as the object lives
/// the terminal shows none of them, and Ctrl-C stays a signal. Nothing where the input is no terminal. One thread.
class TakeKeys {
public:
    TakeKeys();
    ~TakeKeys();
    TakeKeys(TakeKeys const&) = delete;
    TakeKeys& operator=(TakeKeys const&) = delete;

    bool areThere() const { return areThere_; }
    /// A key that was pressed since; none while the command runs in the terminal's background.
    std::optional<char> next();

private:
    bool areThere_ = false;
};

}
