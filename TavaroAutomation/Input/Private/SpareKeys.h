#pragma once

#include <TavaroAutomation/Input/Private/FakeInput.h>

#include <deque>
#include <set>
#include <stop_token>

namespace tavaro::x11 {

/// Keycodes that the keyboard leaves unused, to type what its layout lacks: each is made to mean one character for a
/// while. Programs read a changed keyboard when they get round to it, and see what it means by then, so no code changes
/// its meaning soon, neither for another character nor when all is over.
class SpareKeys {
public:
    explicit SpareKeys(Connection& connection);
    /// Waits until what was typed last has been read, then leaves the keyboard as it was.
    ~SpareKeys();
    SpareKeys(SpareKeys const&) = delete;
    SpareKeys& operator=(SpareKeys const&) = delete;

    /// The key that makes that keysym now. Rests where the key is new, so that programs have read of it.
    /// Throws `AutomationError` (`failed`) where every code has a meaning of its own.
    std::uint8_t keyMaking(std::uint32_t symbol, std::stop_token const& stop);
    std::set<std::uint8_t> const& codes() const { return codes_; }
    /// After somebody else changed the keyboard, whose keys may mean nothing now, or something of their own.
    void lookAgain();

private:
    struct Key {
        std::uint8_t code = 0;
        std::uint32_t symbol = 0; // 0: unused
        InputClock::time_point usedAt;
    };
    void map(Key& key, std::uint32_t symbol);

    Connection& connection_;
    std::deque<Key> keys_; // the one unused for longest first
    std::set<std::uint8_t> codes_;
    int symbolsPerKey_ = 2;
};

}
