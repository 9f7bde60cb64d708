#include <TavaroAutomation/Input/Private/SpareKeys.h>

#include <TavaroAutomation/Errors/AutomationError.h>

#include <algorithm>
#include <map>
#include <thread>

namespace tavaro::x11 {

using namespace std::chrono_literals;

namespace {

constexpr auto toBeRead = 30ms; // of a new meaning, by the program that is typed into
constexpr auto quiet = 1000ms;  // after which nobody looks up a key that was pressed before

/// At the levels that AltGr reaches, which nothing here presses: codes of a program that was killed are known by it.
constexpr xcb_keysym_t mark = 0xffffff; // VoidSymbol
constexpr int markedLevels = 4;         // behind two for each of the two core groups

bool isSpare(xcb_keysym_t const* symbols, int count) {
    if (std::all_of(symbols, symbols + count, [](xcb_keysym_t symbol) { return symbol == XCB_NO_SYMBOL; })) return true;
    return count > markedLevels && symbols[markedLevels] == mark && symbols[0] == symbols[1];
}

}

SpareKeys::SpareKeys(Connection& connection) : connection_(connection) { lookAgain(); }

void SpareKeys::lookAgain() {
    auto const* const setup = xcb_get_setup(connection_.get());
    auto const first = setup->min_keycode;
    auto const count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
    auto const mapping = connection_.ask<xcb_get_keyboard_mapping, xcb_get_keyboard_mapping_reply>(first, count);
    if (!mapping) return;
    symbolsPerKey_ = mapping->keysyms_per_keycode;
    auto const* const symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    std::map<std::uint8_t, xcb_keysym_t> spare;
    for (int i = 0; i < count; ++i) {
        auto const* const own = symbols + i * symbolsPerKey_;
        if (isSpare(own, symbolsPerKey_)) spare.emplace(static_cast<std::uint8_t>(first + i), own[0]);
    }
    std::erase_if(keys_, [&](Key const& key) { return !spare.contains(key.code); });
    for (auto& key : keys_) key.symbol = spare.extract(key.code).mapped();
    for (auto const& [code, symbol] : spare) keys_.push_front({code, symbol, {}});
    codes_.clear();
    for (auto const& key : keys_) codes_.insert(key.code);
}

SpareKeys::~SpareKeys() {
    InputClock::time_point last;
    for (auto const& key : keys_) last = std::max(last, key.usedAt);
    if (last != InputClock::time_point{}) std::this_thread::sleep_until(last + quiet);
    for (auto& key : keys_) {
        if (key.symbol != 0) map(key, 0);
    }
    connection_.synchronize();
}

void SpareKeys::map(Key& key, std::uint32_t symbol) {
    std::vector<xcb_keysym_t> symbols(static_cast<std::size_t>(std::max(2, symbolsPerKey_)), symbol);
    if (symbol != 0 && symbols.size() > markedLevels) std::fill(symbols.begin() + markedLevels, symbols.end(), mark);
    xcb_change_keyboard_mapping(connection_.get(), 1, key.code, static_cast<std::uint8_t>(symbols.size()),
                                symbols.data());
    key.symbol = symbol;
}

std::uint8_t SpareKeys::keyMaking(std::uint32_t symbol, std::stop_token const& stop) {
    if (keys_.empty())
        throw AutomationError(AutomationError::Kind::failed,
                              "This keyboard has no unused key left to type characters with that its layout lacks.");
    auto found = std::ranges::find(keys_, symbol, &Key::symbol);
    if (found == keys_.end()) {
        found = keys_.begin();
        if (found->symbol != 0) restUntil(found->usedAt + quiet, stop);
        map(*found, symbol);
        connection_.synchronize();
        found->usedAt = InputClock::now(); // also where the rest is cut short: the meaning is out there
        rest(toBeRead, stop);
    }
    Key key = *found;
    key.usedAt = InputClock::now();
    keys_.erase(found);
    keys_.push_back(key);
    return key.code;
}

}
